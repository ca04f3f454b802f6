#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "platform/foundation/Error.h"
#include "platform/ipc/FrameHeader.h"

namespace quenlet {

// Cuts a stream of bytes into messages. Memory is at most about twice the bytes that have come and
// were not taken yet, whatever a header announces. One thread at a time.
class FrameReader final {
 public:
  struct Frame final {
    FrameKind kind = FrameKind::failure;
    std::uint64_t identifier = 0;
    // Into the reader's memory, good until the next room() or next().
    std::string_view body;
    // When not null the header makes no sense, or announces too much, and nothing that follows can
    // be understood. The body then is what has come of it.
    ErrorPtr error;
  };

  // Messages of kinds behind `lastKnownKind` make no sense.
  explicit FrameReader(std::size_t maximumMessageSize, FrameKind lastKnownKind = FrameKind::failure)
      : maximumSize(maximumMessageSize), lastKind(lastKnownKind) {}

  // For messages that have not been taken yet.
  void setMaximumMessageSize(std::size_t sizeInBytes) { maximumSize = sizeInBytes; }

  // Where the stream's next bytes go; at least one byte.
  [[nodiscard]] std::span<char> room();
  // The first `count` bytes of the room are filled.
  void added(std::size_t count) { end += count; }
  // The next whole message, or nothing when more bytes are needed.
  [[nodiscard]] std::optional<Frame> next();
  // Lets next() give the message once more that it has just given.
  void putBack(const Frame& message) { begin -= FrameHeader::sizeInBytes + message.body.size(); }
  // Whether bytes have come that were not taken.
  [[nodiscard]] bool isEmpty() const { return begin == end; }
  // How much memory it has now.
  [[nodiscard]] std::size_t capacityInBytes() const { return capacity; }

 private:
  void makeRoom();
  void giveBack();

  std::size_t maximumSize;
  FrameKind lastKind;
  std::unique_ptr<char[]> bytes;
  std::size_t capacity = 0;
  // The bytes not taken yet are [begin, end).
  std::size_t begin = 0;
  std::size_t end = 0;
};

}  // namespace quenlet
