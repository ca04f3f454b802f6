#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "platform/donations/DonationFeedbackStore.h"
#include "platform/files/DataProxy.h"
#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// Feedback in a property-list file: for each contact identifier a list of contents, each with its
// status, "rejected" or "confirmed". Thread-safe.
//
// Look-ups take a set of keys in memory, so that their cost does not grow with the file, and never
// wait for its lock. What is known of the file:
//
//   state     the file is read, or is missing    it cannot be read, or is damaged
//   unread    known                              unknown
//   unknown   known, and the handler is called   unknown
//   known     known; the handler is called when  known: what was rejected stays away while an
//             keys have been added               editor is at work
//
// It is read at the first look-up, when it has changed, and, where the system could not read it,
// again some seconds later. The problem is said on standard error, once.
//
// Rejections are written one batch at a time on a scheduler, so that the caller waits for neither
// the disk nor another program that holds the file's lock; those that come meanwhile share the next
// batch. Handlers run there or on the file layer's writer thread. A file that is damaged or cannot
// be read fails the rejection and stays: it may hold earlier ones, and an editor may be at work on
// it. Entries that are not understood survive each write.
class PropertyListFeedbackStore final : public DonationFeedbackStore {
 public:
  // The first delay before a file that the system could not read is tried again; it doubles with
  // each failure.
  static constexpr double retrySeconds = 5.0;
  static constexpr double longestRetrySeconds = 320.0;

  // `eventLoop` tells of changes that other programs make to the file. `worker`, a serial
  // scheduler, reads it then, calls the change handler for them, and writes.
  PropertyListFeedbackStore(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy,
                            EventLoop& eventLoop, std::shared_ptr<Scheduler> worker);
  ~PropertyListFeedbackStore() override;
  PropertyListFeedbackStore(const PropertyListFeedbackStore&) = delete;
  PropertyListFeedbackStore& operator=(const PropertyListFeedbackStore&) = delete;

  [[nodiscard]] bool donatedValueHasBeenConfirmedOrRejected(
      const DonationValue& value, const std::string& contactIdentifier) override;
  // Fails, and records none of `values`, when the file's form cannot hold one of them.
  void rejectDonatedValues(const DonationValues& values, const std::string& contactIdentifier,
                           std::function<void(ErrorPtr)> completionHandler) override;
  void setChangeHandler(std::function<void()> handler) override;

 private:
  struct State;
  std::shared_ptr<State> state;
  std::shared_ptr<Cancelable> watch;
};

}  // namespace quenlet
