#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "platform/feedback/FeedbackFile.h"
#include "quenlet/Result.h"

namespace quenlet {

// The owner's decisions on donated values, as the agent follows them: what was rejected, and what a
// contacts program has noted as confirmed. Both keep a value from being donated. They are read from
// and changed in the feedback file, which needs no agent; a running one notices. One thread.
class OwnersDecisions final {
 public:
  // An error when the user has no home directory.
  [[nodiscard]] static Result<OwnersDecisions> open();

  // In the order of the file, each content once. An error when the file is damaged or cannot be
  // read; empty when it is missing.
  [[nodiscard]] Result<std::vector<FeedbackDecision>> all() const;
  // Removes these, and no others, durably; the values can be donated again. Returns how many of
  // them were still there. Fails, and changes nothing, when the file is damaged or another program
  // does not release its lock.
  [[nodiscard]] Result<std::size_t> takeBack(const std::vector<FeedbackDecision>& decisions) const;

 private:
  explicit OwnersDecisions(FeedbackFile feedback) : file(std::move(feedback)) {}

  FeedbackFile file;
};

// How many of `values` the owner has decided on, so that the agent does not take them. None when
// the decisions cannot be read.
[[nodiscard]] std::size_t countDecided(const DonationValues& values);

// Those among `values` that one of `decisions` keeps away.
[[nodiscard]] DonationValues valuesDecidedOn(const DonationValues& values,
                                             const std::vector<FeedbackDecision>& decisions);

}  // namespace quenlet
