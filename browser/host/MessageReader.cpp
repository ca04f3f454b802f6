#include "browser/host/MessageReader.h"

#include <cstdint>
#include <cstring>

namespace quenlet {

std::optional<std::string> MessageReader::next() {
  std::uint32_t length = 0;
  if (isFaulty || pending.size() < sizeof length) return std::nullopt;
  std::memcpy(&length, pending.data(), sizeof length);
  if (length == 0 || length > mostBytes) {
    isFaulty = true;
    pending.clear();
    return std::nullopt;
  }
  if (pending.size() < sizeof length + length) return std::nullopt;
  std::string message = pending.substr(sizeof length, length);
  pending.erase(0, sizeof length + length);
  return message;
}

}  // namespace quenlet
