#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

#include "platform/ipc/FrameHeader.h"
#include "quenlet/Error.h"

namespace quenlet {

// Cuts a stream of bytes into messages. Memory grows with the bytes that have arrived, never with
// the size that a header announces; a buffer over 64 KiB is freed when it is empty. One thread at a
// time.
class FrameReader final {
 public:
  struct Frame final {
    FrameKind kind = FrameKind::failure;
    std::uint64_t identifier = 0;
    // Into the reader's memory, good until the next room() or next().
    std::string_view body;
    // Set when the header is malformed or announces too large a message: the rest of the stream is
    // unreadable. `body` then is what has arrived of the message.
    ErrorPtr error;
  };

  // Kinds after `lastKnownKind` are malformed.
  explicit FrameReader(std::size_t maximumMessageSize, FrameKind lastKnownKind = FrameKind::failure)
      : maximumSize(maximumMessageSize), lastKind(lastKnownKind) {}

  // Applies to messages that have not been taken yet.
  void setMaximumMessageSize(std::size_t sizeInBytes) { maximumSize = sizeInBytes; }

  // Where to put the next bytes of the stream; never empty.
  [[nodiscard]] std::span<char> room();
  // Tells that the first `count` bytes of room() have been filled.
  void added(std::size_t count) { end += count; }
  // The next whole message, or nothing when more bytes are needed.
  [[nodiscard]] std::optional<Frame> next();
  // Makes next() return `message` again, the one it has just returned.
  void putBack(const Frame& message) { begin -= FrameHeader::sizeInBytes + message.body.size(); }
  // Whether all bytes that arrived have been taken.
  [[nodiscard]] bool isEmpty() const { return begin == end; }
  [[nodiscard]] std::size_t capacityInBytes() const { return capacity; }

 private:
  void makeRoom();
  void giveBack();

  std::size_t maximumSize;
  FrameKind lastKind;
  std::unique_ptr<char[]> bytes;
  std::size_t capacity = 0;
  // The bytes in [begin, end) have not been taken yet.
  std::size_t begin = 0;
  std::size_t end = 0;
};

}  // namespace quenlet
