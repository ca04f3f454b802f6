#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quenlet {

// Cuts what a browser writes into messages: a length of 32 bits in the machine's byte order, then
// that many bytes. Holds no more than one message and what was read with it. One thread.
class MessageReader final {
 public:
  // Our requests have some thirty bytes.
  static constexpr std::size_t mostBytes = 4096;

  void add(std::string_view bytes) { pending += bytes; }
  // The next whole message; nothing until it has come, or ever after a fault.
  [[nodiscard]] std::optional<std::string> next();
  // Whether a message was announced that is empty or longer than `mostBytes`. Nothing behind it can
  // be understood.
  [[nodiscard]] bool hasFault() const { return isFaulty; }

 private:
  std::string pending;
  bool isFaulty = false;
};

}  // namespace quenlet
