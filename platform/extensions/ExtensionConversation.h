#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>

#include "platform/extensions/ExtensionRequest.h"
#include "platform/extensions/ExtensionServing.h"
#include "platform/foundation/FileDescriptor.h"
#include "platform/ipc/FrameReader.h"
#include "platform/ipc/OutputQueue.h"
#include "platform/scheduling/EventLoop.h"

namespace quenlet {

// The agent's side of a donor extension's socket: sends requests in order, a bounded number ahead
// of the answers, and never blocks. An answer with invalid values fails its own request; an
// unexpected answer or a malformed header breaks the conversation. Has no time limits; see
// ExtensionRun. On the loop's thread only. Requests complete on that thread; re-donations, long
// answers and the failures of unanswered requests in the background.
//
//   ask() -> waiting -> asked (up to `window`) -> answered: short ones on the loop's thread
//                          |                                long ones in the background
//                          +-- close(): all that are left fail, in the background
class ExtensionConversation final {
 public:
  struct Events final {
    // Requests have been answered.
    std::function<void()> answered;
    // The program closed its end (`ended`) or violated the protocol (badAnswer). Called once; the
    // owner must call close().
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
  // For a program that has ended: reads the answers that it left, and sends nothing more.
  void takeLastAnswers();
  // Closes the socket and fails the unanswered requests. Not for a request's completion to call.
  void close(const ErrorPtr& reason);

 private:
  void onReady(std::uint32_t events);
  // Returns the number of bytes read; 0 when there is nothing to read, now or for ever.
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
  // Events that the handlers have not been told yet.
  bool hasAnswered = false;
  ErrorPtr fault;
};

}  // namespace quenlet
