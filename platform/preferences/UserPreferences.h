#pragma once

#include <filesystem>
#include <memory>

#include "platform/preferences/DonationPreferences.h"
#include "platform/scheduling/EventLoop.h"
#include "quenlet/Result.h"

namespace quenlet {

// The calling user's donation preferences, as the agent reads them. One thread.
class UserPreferences final {
 public:
  // An error when the user has no home or runtime directory.
  [[nodiscard]] static Result<std::unique_ptr<UserPreferences>> open();

  [[nodiscard]] DonationPreferences& preferences() { return *donationPreferences; }

 private:
  UserPreferences(const std::filesystem::path& home, const std::filesystem::path& runtime);

  // Never runs: the constructors need a loop, but nothing waits for its events.
  EventLoop eventLoop;
  const std::shared_ptr<DonationPreferences> donationPreferences;
};

}  // namespace quenlet
