#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ipc/FrameReader.h"
#include "platform/ipc/ServiceInterface.h"
#include "quenlet/Result.h"

namespace quenlet {

// What a client makes of the last message that answers a request. Stateless.
class ReplyDecoder final {
 public:
  ReplyDecoder() = delete;

  // The limit for a reply in parts: as much as the largest file that the service could have read.
  static constexpr std::size_t maximumSize = std::size_t{1} << 30;

  // The error in the body of a failure; the one of a body that is not valid.
  [[nodiscard]] static ErrorPtr failure(std::string_view body);
  // The validated values. `parts` are the bodies of the messages before `last`, which has the rest.
  [[nodiscard]] static Result<std::string> reply(const FrameReader::Frame& last, std::string parts,
                                                 const std::vector<WireParameter>& parameters);
};

}  // namespace quenlet
