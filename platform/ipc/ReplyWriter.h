#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "platform/foundation/FileDescriptor.h"
#include "platform/ipc/ReplyQueue.h"
#include "platform/ipc/ServiceContext.h"

namespace quenlet {

// Writes the answers of one connection to its socket, as far as the peer reads them. A peer that
// leaves too much unread is abandoned: nothing more is written, and the socket is shut down, which
// wakes the thread that may close it. One thread at a time.
//
// A reply in pieces is encoded as its peer reads it: while nextPiece() has one, the caller that has
// claimed the pieces encodes it, without this object, and adds it. A peer that stops reading thus
// holds a few pieces in memory, not a whole reply.
class ReplyWriter final {
 public:
  // `context` outlives the writer.
  ReplyWriter(const ServiceContext& context, FileDescriptor connectedSocket)
      : limits(context.limits),
        descriptor(std::move(connectedSocket)),
        queue(limits.messageSizeInBytes),
        held(context.held) {}

  // Whether more can be written. If not, answers are dropped.
  [[nodiscard]] bool isOpen() const { return descriptor.isOpen() && !abandoned; }
  // -1 after close().
  [[nodiscard]] int socket() const { return descriptor.get(); }
  // Drops what is queued, and hands the socket over.
  [[nodiscard]] FileDescriptor close();
  void abandon();

  // Queue an answer; flush() writes it.
  void append(FrameKind kind, std::uint64_t identifier, std::string body);
  void append(std::uint64_t identifier, EncodedReplyPtr reply);
  void flush();

  // Whether a piece is due and nobody is adding pieces. The caller does, until releasePieces().
  [[nodiscard]] bool claimPieces();
  void releasePieces() { addingPieces = false; }
  // The piece to add next; nothing when none is missing, or the peer must read first.
  [[nodiscard]] std::optional<ReplyQueue::NextPiece> nextPiece() const;
  void addPiece(std::shared_ptr<const std::string> bytes);

  // Whether there is something to write now.
  [[nodiscard]] bool hasBytes() const { return queue.hasBytes(); }
  [[nodiscard]] std::size_t unsentBytes() const { return queue.unsentBytes(); }
  [[nodiscard]] std::size_t repliesInPieces() const { return queue.repliesInPieces(); }

 private:
  [[nodiscard]] bool mayAppend();

  const ServiceLimits& limits;
  FileDescriptor descriptor;
  ReplyQueue queue;
  HeldBytes::Part held;
  bool abandoned = false;
  bool addingPieces = false;
};

}  // namespace quenlet
