#pragma once

#include "platform/contacts/Contact.h"

namespace quenlet {

// All that is known of the owner: what their own card says first, then what was donated and is not
// on it. A value type.
struct WholeCard final {
  // Entries of the own card have no origin; donated ones have.
  Contact contact;
  // Whether these are of the own card; else they were donated, or there is none.
  bool isNameOwn = false;
  bool isImageOwn = false;

  // `own` may be null.
  [[nodiscard]] static WholeCard of(const ContactPtr& own, const Contact& donated);
};

}  // namespace quenlet
