#pragma once

#include <memory>

#include "platform/contacts/Contact.h"
#include "platform/ipc/WireEncoder.h"
#include "platform/ipc/WireReader.h"
#include "quenlet/Result.h"

namespace quenlet {

// The donated me card on the wire: an object of class "Contact" whose content is a dictionary of
// the non-empty fields; entries are dictionaries of "label", "value" and "valueOrigin". The outcome
// of a fetch is an object of class "Either" whose content is a Contact or an Error. Stateless.
class ContactWire final {
 public:
  static constexpr char className[] = "Contact";
  static constexpr char eitherClassName[] = "Either";

  static void encode(WireEncoder& encoder, const Contact& contact);
  // Reads one value; null when it is null or not a complete Contact.
  [[nodiscard]] static std::shared_ptr<const Contact> decode(WireReader& reader);

  static void encodeEither(WireEncoder& encoder,
                           const Result<std::shared_ptr<const Contact>>& contactOrError);
  // Reads one value; a malformedMessage error when it is not such an Either.
  [[nodiscard]] static Result<std::shared_ptr<const Contact>> decodeEither(WireReader& reader);
};

}  // namespace quenlet
