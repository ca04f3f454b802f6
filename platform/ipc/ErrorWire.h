#pragma once

#include "platform/foundation/Error.h"
#include "platform/ipc/WireEncoder.h"
#include "platform/ipc/WireReader.h"

namespace quenlet {

// How an Error travels: an object of class "Error" whose content is a dictionary of "domain",
// "code" and "userInfo" (texts by name); null stands for no error. Stateless.
class ErrorWire final {
 public:
  static constexpr char className[] = "Error";
  // A peer's error with more user-info entries than this keeps the first ones.
  static constexpr std::size_t maximumUserInfoEntries = 64;

  static void encode(WireEncoder& encoder, const ErrorPtr& error);
  // Reads one value. What is neither null nor a whole Error comes back as a malformedMessage error,
  // so that it cannot pass for success.
  [[nodiscard]] static ErrorPtr decode(WireReader& reader);
};

}  // namespace quenlet
