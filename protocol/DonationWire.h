#pragma once

#include "model/DonationValue.h"
#include "platform/ipc/WireEncoder.h"
#include "platform/ipc/WireReader.h"
#include "quenlet/Result.h"

namespace quenlet {

// Donated values on the wire: each is an object of class "DonationValue" with its property-list
// form as content; several are in a list. Stateless.
class DonationWire final {
 public:
  static constexpr char className[] = "DonationValue";

  static void encodeValue(WireEncoder& encoder, const DonationValue& value);
  static void encode(WireEncoder& encoder, const DonationValues& values);
  // Reads one value; null when it is not a valid record, or has more than 1,000 values.
  [[nodiscard]] static DonationValuePtr decodeValue(WireReader& reader);
  // Reads one list. An invalidArguments error when it is not a list, or an element is not a valid
  // record or has more than 1,000 values.
  [[nodiscard]] static Result<DonationValues> decode(WireReader& reader);
  // The same for a list that is being donated. Also a notSerializable error (DonationErrorDomain)
  // when an element exceeds a bound of model/DonationBounds.h, which it names, or has text that no
  // file can hold: one such record in the table would make every later save fail.
  [[nodiscard]] static Result<DonationValues> decodeDonated(WireReader& reader);
};

}  // namespace quenlet
