#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "platform/ipc/UnixServiceConnection.h"
#include "platform/ipc/WireReply.h"

namespace quenlet {

// Answers one request, with noReply if destroyed unused. Keeps the connection alive. Thread-safe.
class UnixServiceConnection::PendingReply final : public ReplyTarget {
 public:
  PendingReply(std::shared_ptr<UnixServiceConnection> asked, std::uint64_t request,
               bool expectsLongReply)
      : identifier(request), isLong(expectsLongReply), connection(std::move(asked)) {}
  PendingReply(const PendingReply&) = delete;
  PendingReply& operator=(const PendingReply&) = delete;
  ~PendingReply() override;

  void send(std::string encodedValues) override;
  void sendInPieces(EncodedReplyPtr reply) override;
  void fail(const ErrorPtr& error);
  [[nodiscard]] bool isWanted() override { return connection->isOpen(); }

  const std::uint64_t identifier;
  const bool isLong;

 private:
  const std::shared_ptr<UnixServiceConnection> connection;
  std::atomic<bool> used = false;
};

}  // namespace quenlet
