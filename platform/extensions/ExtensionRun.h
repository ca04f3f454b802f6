#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/extensions/ExtensionConversation.h"
#include "platform/extensions/ExtensionManifest.h"
#include "platform/extensions/ExtensionProcess.h"
#include "platform/extensions/ExtensionRequest.h"
#include "platform/extensions/ExtensionServing.h"

namespace quenlet {

// One run of a donor's program, from waiting in line through its start, requests and time limits to
// its end. Every request that it accepted is completed. On the loop's thread only.
//
//   state   | event                               | next
//   --------+-------------------------------------+------------------------------------------------
//   waiting | start()                             | running, or gone when it cannot be started
//   running | half of runSeconds has passed       | running, accepts no more requests
//   running | idle for idleSeconds                | ending: the socket is closed
//   running | the program closes its socket       | ending
//   running | a time limit passes, a bad answer   | ending, killed at once
//   ending  | endSeconds pass                     | ending, killed
//   running, ending | the program has ended       | gone
//   any     | abort()                             | gone, killed
class ExtensionRun final : public std::enable_shared_from_this<ExtensionRun> {
 public:
  // Called once, when a started program has ended other than through abort().
  using GoneHandler = std::function<void(const ExtensionRun&)>;

  ExtensionRun(ExtensionSchedulers hostSchedulers, const ExtensionLimits& extensionLimits,
               ExtensionManifestPtr installed, GoneHandler goneHandler);
  ExtensionRun(const ExtensionRun&) = delete;
  ExtensionRun& operator=(const ExtensionRun&) = delete;

  [[nodiscard]] const ExtensionManifest& extension() const { return *manifest; }
  [[nodiscard]] bool isWaiting() const { return state == State::waiting; }
  [[nodiscard]] bool isGone() const { return state == State::gone; }
  // Whether it accepts requests. In the second half of runSeconds it does not: a prompt donor that
  // is asked again and again would otherwise be killed for running too long.
  [[nodiscard]] bool accepts() const {
    return isWaiting() || (state == State::running && isInFirstHalf);
  }

  void add(ExtensionRequestPtr request);
  void start();
  // Kills the program, waits up to a second for its end, and fails the pending requests.
  void abort(const ErrorPtr& reason);

 private:
  enum class State { waiting, running, ending, gone };
  using Action = void (ExtensionRun::*)();

  [[nodiscard]] ErrorPtr startProgram();
  [[nodiscard]] std::shared_ptr<Cancelable> afterDelay(double seconds, Action action);
  void converse(FileDescriptor socket);
  void giveToProgram(ExtensionRequestPtr request);
  void setClock();
  void endFirstHalf();
  void endIdle();
  void endLate();
  void onBroken(const ErrorPtr& fault);
  void end(const ErrorPtr& reason);
  void kill();
  void onProgramEnded();
  void becomeGone(const ErrorPtr& reason);

  const ExtensionSchedulers schedulers;
  const ExtensionLimits limits;
  const ExtensionManifestPtr manifest;
  const GoneHandler onGone;
  State state = State::waiting;
  bool isInFirstHalf = true;
  std::vector<ExtensionRequestPtr> requestsBeforeStart;
  std::unique_ptr<ExtensionProcess> process;
  std::optional<ExtensionConversation> conversation;
  // For the next answer, the end of idleness, or the end of the program; one at a time.
  std::shared_ptr<Cancelable> clock;
  std::shared_ptr<Cancelable> runClock;
};

}  // namespace quenlet
