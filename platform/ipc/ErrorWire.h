#pragma once

#include "platform/ipc/WireEncoder.h"
#include "platform/ipc/WireReader.h"
#include "quenlet/Error.h"

namespace quenlet {

// An Error on the wire: an object of class "Error" whose content is a dictionary of "domain",
// "code" and "userInfo" (texts by name); null means no error. Stateless.
class ErrorWire final {
 public:
  static constexpr char className[] = "Error";
  // decode() keeps the first this many user-info entries of an error.
  static constexpr std::size_t maximumUserInfoEntries = 64;

  static void encode(WireEncoder& encoder, const ErrorPtr& error);
  // Reads one value. Anything but null or a complete Error becomes a malformedMessage error: it
  // must not pass for success.
  [[nodiscard]] static ErrorPtr decode(WireReader& reader);
};

}  // namespace quenlet
