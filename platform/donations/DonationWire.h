#pragma once

#include "model/DonationValue.h"
#include "platform/foundation/Either.h"
#include "platform/ipc/WireEncoder.h"
#include "platform/ipc/WireReader.h"

namespace quenlet {

// How donated values travel: a list of objects of class "DonationValue", each with its
// property-list form as content. Stateless.
class DonationWire final {
 public:
  static constexpr char className[] = "DonationValue";

  static void encode(WireEncoder& encoder, const DonationValues& values);
  // Reads one list. An error when it is none, or an element is no valid record or has more than
  // 1,000 values (invalidArguments), or has text that no file can hold (DonationErrorDomain,
  // notSerializable): one such record in the table would keep every later one off the disk.
  [[nodiscard]] static Result<DonationValues> decode(WireReader& reader);
};

}  // namespace quenlet
