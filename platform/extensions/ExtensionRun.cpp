#include "platform/extensions/ExtensionRun.h"

#include <sys/socket.h>

#include <array>
#include <cerrno>
#include <utility>

#include "platform/extensions/ExtensionError.h"
#include "platform/scheduling/attachedDescriptors.h"

namespace quenlet {

// Two clocks limit a program, both on the loop's thread:
//
//   runClock   start() ---- accepts requests ----> runSeconds/2 ---- answers the rest ----> kill
//   clock      requests pending: answerSeconds, restarted by each answer -----------------> kill
//              idle: idleSeconds ---> close the socket ---> endSeconds -------------------> kill
//
// A program thus ends by itself once its socket is closed, or else by force. Either way,
// onProgramEnded() makes the run gone, and the supervisor starts the next one in line.
//
// Timers and handlers refer to the run weakly: the supervisor may have dropped it since.

namespace {

void cancel(std::shared_ptr<Cancelable>& timer) {
  if (const auto running = std::exchange(timer, nullptr)) running->cancel();
}

ErrorPtr ended() { return makeExtensionError(ExtensionErrorCode::ended, "the extension ended"); }

}  // namespace

ExtensionRun::ExtensionRun(ExtensionSchedulers hostSchedulers,
                           const ExtensionLimits& extensionLimits, ExtensionManifestPtr installed,
                           GoneHandler goneHandler)
    : schedulers(std::move(hostSchedulers)),
      limits(extensionLimits),
      manifest(std::move(installed)),
      onGone(std::move(goneHandler)) {}

void ExtensionRun::add(ExtensionRequestPtr request) {
  if (isWaiting()) {
    requestsBeforeStart.push_back(std::move(request));
    return;
  }
  const bool wasIdle = conversation->isIdle();
  giveToProgram(std::move(request));
  if (wasIdle) setClock();
}

void ExtensionRun::start() {
  if (const ErrorPtr error = startProgram()) {
    becomeGone(makeExtensionError(
        ExtensionErrorCode::cannotStart,
        "the program of " + manifest->bundleIdentifier + ": " + error->debugDescription()));
    return;
  }
  state = State::running;
  runClock = afterDelay(limits.runSeconds / 2, &ExtensionRun::endFirstHalf);
  for (ExtensionRequestPtr& request : std::exchange(requestsBeforeStart, {})) {
    giveToProgram(std::move(request));
  }
  setClock();
}

ErrorPtr ExtensionRun::startProgram() {
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    return makePosixError(errno, "create a socket");
  }
  FileDescriptor ours(ends[0]);
  FileDescriptor theirs(ends[1]);
  refuseDescriptors(ours.get());
  auto started = ExtensionProcess::start(manifest->executable, std::move(theirs), limits.openFiles,
                                         schedulers.loop, [weak = weak_from_this()] {
                                           if (const auto run = weak.lock()) run->onProgramEnded();
                                         });
  if (!started.ok()) return started.error();
  process = std::move(started).takeValue();
  converse(std::move(ours));
  return nullptr;
}

void ExtensionRun::converse(FileDescriptor socket) {
  const auto weak = weak_from_this();
  conversation.emplace(schedulers, std::move(socket), limits.unansweredRequests,
                       ExtensionConversation::Events{[weak] {
                                                       if (const auto run = weak.lock()) {
                                                         run->setClock();
                                                       }
                                                     },
                                                     [weak](const ErrorPtr& fault) {
                                                       if (const auto run = weak.lock()) {
                                                         run->onBroken(fault);
                                                       }
                                                     }});
}

void ExtensionRun::giveToProgram(ExtensionRequestPtr request) {
  if (request->isToStart()) {
    request->complete(Result<std::string>::success({}));
  } else {
    conversation->ask(std::move(request));
  }
}

std::shared_ptr<Cancelable> ExtensionRun::afterDelay(double seconds, Action action) {
  return schedulers.onLoop->afterDelay(seconds, [weak = weak_from_this(), action] {
    if (const auto run = weak.lock()) (*run.*action)();
  });
}

void ExtensionRun::setClock() {
  cancel(clock);
  clock = conversation->isIdle() ? afterDelay(limits.idleSeconds, &ExtensionRun::endIdle)
                                 : afterDelay(limits.answerSeconds, &ExtensionRun::endLate);
}

void ExtensionRun::endFirstHalf() {
  isInFirstHalf = false;
  runClock = afterDelay(limits.runSeconds / 2, &ExtensionRun::endLate);
}

void ExtensionRun::endIdle() { end(ended()); }

void ExtensionRun::endLate() {
  end(makeExtensionError(ExtensionErrorCode::timedOut, "the extension did not answer in time"));
  kill();
}

void ExtensionRun::onBroken(const ErrorPtr& fault) {
  end(fault);
  // A program that violates the protocol gets no time to end by itself.
  if (fault->code() == static_cast<std::int64_t>(ExtensionErrorCode::badAnswer)) kill();
}

void ExtensionRun::end(const ErrorPtr& reason) {
  if (state != State::running) return;
  state = State::ending;
  cancel(runClock);
  cancel(clock);
  clock = afterDelay(limits.endSeconds, &ExtensionRun::kill);
  conversation->close(reason);
}

void ExtensionRun::kill() {
  if (process) process->kill();
}

void ExtensionRun::onProgramEnded() {
  // A program may answer and exit at once: its end can be seen before its last answers are read.
  if (state == State::running) conversation->takeLastAnswers();
  becomeGone(ended());
  onGone(*this);
}

void ExtensionRun::abort(const ErrorPtr& reason) { becomeGone(reason); }

void ExtensionRun::becomeGone(const ErrorPtr& reason) {
  state = State::gone;
  cancel(runClock);
  cancel(clock);
  process.reset();
  if (conversation) conversation->close(reason);
  ExtensionRequest::failAll(std::exchange(requestsBeforeStart, {}), reason, *schedulers.background);
}

}  // namespace quenlet
