#pragma once

#include <memory>

#include "platform/contacts/Contact.h"
#include "platform/foundation/Either.h"
#include "platform/ipc/WireEncoder.h"
#include "platform/ipc/WireReader.h"

namespace quenlet {

// How the donated me card travels: an object of class "Contact" whose content is a dictionary of
// its fields, empty ones left out; entries are dictionaries of "label", "value" and "valueOrigin".
// The outcome of a fetch is an object of class "Either" whose content is a Contact or an Error.
// Stateless.
class ContactWire final {
 public:
  static constexpr char className[] = "Contact";
  static constexpr char eitherClassName[] = "Either";

  static void encode(WireEncoder& encoder, const Contact& contact);
  // Reads one value; null when it is null or no whole Contact.
  [[nodiscard]] static std::shared_ptr<const Contact> decode(WireReader& reader);

  static void encodeEither(WireEncoder& encoder,
                           const Result<std::shared_ptr<const Contact>>& contactOrError);
  // Reads one value; a malformedMessage error on the right when it is no such Either.
  [[nodiscard]] static Result<std::shared_ptr<const Contact>> decodeEither(WireReader& reader);
};

}  // namespace quenlet
