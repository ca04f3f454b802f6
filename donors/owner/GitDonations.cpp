#include "donors/owner/GitDonations.h"

#include <cerrno>
#include <chrono>
#include <utility>

#include "donors/source/DonationCluster.h"
#include "foreign/Mailbox.h"

namespace quenlet {
namespace {

constexpr std::chrono::seconds patience(5);
// The status of "git config --get" for a key that is not set anywhere.
constexpr int notSet = 1;

}  // namespace

SourceDonor::Donations gitDonations() {
  return gitDonationsFrom(
      endOf({"git", "config", "--global", "--includes", "--get", "user.email"}, patience));
}

SourceDonor::Donations gitDonationsFrom(const std::optional<CommandEnd>& answer) {
  using Donations = SourceDonor::Donations;
  const auto fail = [](const char* sentence) {
    return Donations::failure(makeError(PosixErrorDomain, EIO, sentence));
  };
  if (!answer) return fail("git is not there, or does not answer");
  if (answer->status != 0 && answer->status != notSet) return fail("git cannot read its settings");
  std::vector<Donation> donations;
  if (const auto address = personalAddress(answer->status == 0 ? answer->output : "")) {
    DonationCluster cluster("org.quenlet.donors.git", "user.email");
    cluster.add(Email{.address = *address}, "email");
    cluster.moveTo(donations);
  }
  return Donations::success(std::move(donations));
}

}  // namespace quenlet
