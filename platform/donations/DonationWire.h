#pragma once

#include "model/DonationValue.h"
#include "platform/foundation/Either.h"
#include "platform/ipc/WireEncoder.h"
#include "platform/ipc/WireReader.h"

namespace quenlet {

// How donated values travel: an object of class "DonationValue" each, with its property-list form
// as content; several in a list. Stateless.
class DonationWire final {
 public:
  static constexpr char className[] = "DonationValue";

  static void encodeValue(WireEncoder& encoder, const DonationValue& value);
  static void encode(WireEncoder& encoder, const DonationValues& values);
  // Reads one value; null when it is no valid record, or one of more than 1,000 values.
  [[nodiscard]] static DonationValuePtr decodeValue(WireReader& reader);
  // Reads one list. An error when it is none, or an element is no valid record or has more than
  // 1,000 values (invalidArguments).
  [[nodiscard]] static Result<DonationValues> decode(WireReader& reader);
  // The same for a list that somebody donates. Also an error when an element is beyond the bounds
  // of model/DonationBounds.h, which it names, or has text that no file can hold
  // (DonationErrorDomain, notSerializable): one such record in the table would keep every later one
  // off the disk.
  [[nodiscard]] static Result<DonationValues> decodeDonated(WireReader& reader);
};

}  // namespace quenlet
