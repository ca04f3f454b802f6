#include "platform/ipc/FrameReader.h"

#include <algorithm>
#include <cstring>

#include "platform/ipc/ServiceInterface.h"

namespace quenlet {

namespace {

constexpr std::size_t initialCapacity = std::size_t{16} << 10;
// A larger buffer is given back once it is empty: one large message should not cost an idle
// connection its memory.
constexpr std::size_t keptCapacity = std::size_t{64} << 10;

ErrorPtr judge(const FrameHeader& header, std::size_t maximumSize, FrameKind lastKind) {
  if (header.length > maximumSize) {
    return makeServiceError(ServiceErrorCode::messageTooLarge,
                            "a message is larger than " + std::to_string(maximumSize) + " bytes");
  }
  if (header.length < FrameHeader::countedBytes) {
    return makeServiceError(ServiceErrorCode::malformedMessage,
                            "a message is shorter than its header");
  }
  if (header.kind > static_cast<std::uint8_t>(lastKind)) {
    return makeServiceError(ServiceErrorCode::malformedMessage, "a message is of unknown kind");
  }
  return nullptr;
}

}  // namespace

std::span<char> FrameReader::room() {
  if (begin == end) giveBack();
  if (end == capacity) makeRoom();
  return {bytes.get() + end, capacity - end};
}

void FrameReader::giveBack() {
  begin = end = 0;
  if (capacity <= keptCapacity) return;
  bytes.reset();
  capacity = 0;
}

//   0 ......... begin ............. end ......... capacity
//   |  taken      |  not taken yet   |  room()      |
//
// A full buffer with half of it taken is compacted, else doubled. Either way a byte is copied a
// constant number of times on average, even if a large message comes in many small reads.
void FrameReader::makeRoom() {
  const std::size_t held = end - begin;
  if (capacity > 0 && begin >= capacity / 2) {
    std::memmove(bytes.get(), bytes.get() + begin, held);
  } else {
    const std::size_t grown = std::max(initialCapacity, capacity * 2);
    auto larger = std::make_unique_for_overwrite<char[]>(grown);
    if (held > 0) std::memcpy(larger.get(), bytes.get() + begin, held);
    bytes = std::move(larger);
    capacity = grown;
  }
  begin = 0;
  end = held;
}

std::optional<FrameReader::Frame> FrameReader::next() {
  // Here as well as in room(): the peer may not send anything for a long time.
  if (begin == end) giveBack();
  if (end - begin < FrameHeader::sizeInBytes) return std::nullopt;
  const std::string_view held(bytes.get() + begin, end - begin);
  const FrameHeader header = FrameHeader::decode(held);
  // Before the body is waited for: a peer must not make us buffer a message that will be refused.
  if (ErrorPtr error = judge(header, maximumSize, lastKind)) {
    return Frame{static_cast<FrameKind>(header.kind), header.identifier,
                 held.substr(FrameHeader::sizeInBytes), std::move(error)};
  }
  const std::size_t bodySize = header.length - FrameHeader::countedBytes;
  if (held.size() - FrameHeader::sizeInBytes < bodySize) return std::nullopt;
  begin += FrameHeader::sizeInBytes + bodySize;
  return Frame{static_cast<FrameKind>(header.kind), header.identifier,
               held.substr(FrameHeader::sizeInBytes, bodySize), nullptr};
}

}  // namespace quenlet
