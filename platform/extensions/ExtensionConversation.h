#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>

#include "platform/extensions/ExtensionRequest.h"
#include "platform/extensions/ExtensionSchedulers.h"
#include "platform/ipc/FrameReader.h"
#include "platform/ipc/OutputQueue.h"
#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {

// The agent's side of the socket of a donor extension: sends requests in order, a bounded number
// ahead of the answers, and never waits. An answer with wrong values fails its own request; what
// nobody asked for, and a header that makes no sense, break the conversation. Knows no time limit.
// On the loop's thread only. Requests complete from there; re-donations, long answers and failures
// of what was not answered in the background.
class ExtensionConversation final {
 public:
  struct Events final {
    // Requests have been answered.
    std::function<void()> answered;
    // The peer has gone (ended) or does not keep to the form (badAnswer). Once; close() follows.
    std::function<void(ErrorPtr)> broken;
  };

  ExtensionConversation(const ExtensionSchedulers& schedulers, FileDescriptor connectedSocket,
                        std::size_t unansweredRequests, Events eventHandlers);
  ~ExtensionConversation();
  ExtensionConversation(const ExtensionConversation&) = delete;
  ExtensionConversation& operator=(const ExtensionConversation&) = delete;

  void ask(ExtensionRequestPtr request);
  // Whether everything asked has been answered.
  [[nodiscard]] bool isIdle() const { return waiting.empty() && asked.empty(); }
  // Takes the answers that have come by now, and asks nothing more: the program has ended.
  void takeLastAnswers();
  // Ends the socket and fails what has not been answered. Not from a request's completion.
  void close(const ErrorPtr& reason);

 private:
  void onReady(std::uint32_t events);
  // The number of bytes; 0 when there is nothing to read now, or not any more.
  std::size_t readOnce();
  void takeAnswers();
  [[nodiscard]] ErrorPtr takeAnswer(const FrameReader::Frame& frame);
  void send();
  void sendOne(const ExtensionRequestPtr& request);
  void reportOutcome();

  const std::size_t window;
  const Events handlers;
  const std::shared_ptr<Scheduler> background;
  FileDescriptor socket;
  std::shared_ptr<EventLoop::Watch> watch;
  FrameReader reader;
  OutputQueue output;
  std::deque<ExtensionRequestPtr> waiting;
  std::map<std::uint64_t, ExtensionRequestPtr> asked;
  std::uint64_t lastIdentifier = 0;
  bool sending = true;
  // What has happened and was not told yet.
  bool hasAnswered = false;
  ErrorPtr fault;
};

}  // namespace quenlet
