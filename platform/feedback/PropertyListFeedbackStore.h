#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "platform/feedback/DonationFeedbackStore.h"
#include "platform/files/DataProxy.h"
#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// Feedback in a property-list file: for each contact identifier a list of contents, each with its
// status, "rejected" or "confirmed". Thread-safe.
//
// Look-ups use a set of keys in memory: their cost does not grow with the file, and they never wait
// for its lock. A reading of the file changes the state of that set as follows:
//
//   state     the file is read, or is missing    it cannot be read, or is damaged
//   unread    known                              unknown
//   unknown   known, and the handler is called   unknown
//   known     known; the handler is called when  known: rejected values stay rejected while an
//             keys have been added               editor is at work
//
// It is read at the first look-up, after changes, and, if the system could not read it, again some
// seconds later. The problem is reported on standard error once.
//
// Rejections are written in batches on a scheduler: callers wait neither for the disk nor for
// another program that holds the file's lock. Rejections that arrive during a write form the next
// batch. Handlers run on the scheduler or on the file layer's writer thread. If the file is damaged
// or cannot be read, the rejection fails and the file stays: it may hold earlier rejections, or be
// open in an editor. Unknown entries survive each write.
class PropertyListFeedbackStore final : public DonationFeedbackStore {
 public:
  // The first delay before another try to read a file that the system could not read. It doubles
  // with each failure, up to longestRetrySeconds.
  static constexpr double retrySeconds = 5.0;
  static constexpr double longestRetrySeconds = 320.0;

  // `eventLoop` watches the file for changes by other programs. `worker`, a serial scheduler, then
  // reads it and calls the change handler; it also writes.
  PropertyListFeedbackStore(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy,
                            EventLoop& eventLoop, std::shared_ptr<Scheduler> worker);
  ~PropertyListFeedbackStore() override;
  PropertyListFeedbackStore(const PropertyListFeedbackStore&) = delete;
  PropertyListFeedbackStore& operator=(const PropertyListFeedbackStore&) = delete;

  [[nodiscard]] bool donatedValueHasBeenConfirmedOrRejected(
      const DonationValue& value, const std::string& contactIdentifier) override;
  // Fails, and records none of `values`, when a property list cannot hold one of them.
  void rejectDonatedValues(const DonationValues& values, const std::string& contactIdentifier,
                           std::function<void(ErrorPtr)> completionHandler) override;
  void setChangeHandler(std::function<void()> handler) override;

 private:
  struct State;
  std::shared_ptr<State> state;
  std::shared_ptr<Cancelable> watch;
};

}  // namespace quenlet
