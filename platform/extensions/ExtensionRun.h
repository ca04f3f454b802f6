#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "platform/extensions/ExtensionConversation.h"
#include "platform/extensions/ExtensionLimits.h"
#include "platform/extensions/ExtensionManifest.h"
#include "platform/extensions/ExtensionProcess.h"
#include "platform/extensions/ExtensionRequest.h"
#include "platform/extensions/ExtensionSchedulers.h"

namespace quenlet {

// One run of a donor's program: from the place in line over its start, requests and time limits to
// its end. Every request that it accepted is completed. On the loop's thread only.
//
//   state   | event                               | next
//   --------+-------------------------------------+------------------------------------------------
//   waiting | start()                             | running, or gone when it cannot be started
//   running | half of runSeconds has passed       | running, takes no more requests
//   running | nothing to do for idleSeconds       | ending: the socket is closed
//   running | the program closes its socket       | ending
//   running | a limit of time, a senseless answer | ending, killed at once
//   ending  | endSeconds pass                     | ending, killed
//   running, ending | the program has ended       | gone
//   any     | abort()                             | gone, killed
class ExtensionRun final : public std::enable_shared_from_this<ExtensionRun> {
 public:
  // Called once, when a started program has gone by itself.
  using GoneHandler = std::function<void(const ExtensionRun&)>;

  ExtensionRun(ExtensionSchedulers hostSchedulers, const ExtensionLimits& extensionLimits,
               ExtensionManifestPtr installed, GoneHandler goneHandler);
  ExtensionRun(const ExtensionRun&) = delete;
  ExtensionRun& operator=(const ExtensionRun&) = delete;

  [[nodiscard]] const ExtensionManifest& extension() const { return *manifest; }
  [[nodiscard]] bool isWaiting() const { return state == State::waiting; }
  [[nodiscard]] bool isGone() const { return state == State::gone; }
  // Whether it takes requests. In the second half of its time it does not, so that a prompt donor
  // that is asked again and again is not killed over it.
  [[nodiscard]] bool accepts() const {
    return isWaiting() || (state == State::running && isInFirstHalf);
  }

  void add(ExtensionRequestPtr request);
  void start();
  // Kills the program, waits a second at most for its end, and fails what is left.
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
  // For the answer, the end of idleness, or the end of the program: one at a time.
  std::shared_ptr<Cancelable> clock;
  std::shared_ptr<Cancelable> runClock;
};

}  // namespace quenlet
