#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "platform/donations/DonationFeedbackStore.h"
#include "platform/files/DataProxy.h"
#include "platform/scheduling/EventLoop.h"

namespace quenlet {

// Feedback in a property-list file: for each contact identifier a list of contents, each with its
// status, "rejected" or "confirmed". Thread-safe.
//
// Look-ups take a set of keys in memory, so that their cost does not grow with the file. The set is
// made at the first look-up and again when the file has changed. Rejections never wait for the disk
// on the calling thread: those that come while a write is under way share the next one, and
// handlers run on the file layer's writer thread, or at once when nothing has to be written.
// Entries that are not understood survive each write.
class PropertyListFeedbackStore final : public DonationFeedbackStore {
 public:
  // `eventLoop` tells of changes that other programs make to the file; they count once it has run.
  PropertyListFeedbackStore(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy,
                            EventLoop& eventLoop);
  ~PropertyListFeedbackStore() override;
  PropertyListFeedbackStore(const PropertyListFeedbackStore&) = delete;
  PropertyListFeedbackStore& operator=(const PropertyListFeedbackStore&) = delete;

  [[nodiscard]] bool donatedValueHasBeenConfirmedOrRejected(
      const DonationValue& value, const std::string& contactIdentifier) override;
  // Fails, and records none of `values`, when the file's form cannot hold one of them.
  void rejectDonatedValues(const DonationValues& values, const std::string& contactIdentifier,
                           std::function<void(ErrorPtr)> completionHandler) override;

 private:
  struct State;
  std::shared_ptr<State> state;
  std::shared_ptr<Cancelable> watch;
};

}  // namespace quenlet
