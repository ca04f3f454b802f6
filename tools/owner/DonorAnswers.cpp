#include "tools/owner/DonorAnswers.h"

#include <algorithm>
#include <utility>

#include "platform/extensions/ExtensionError.h"
#include "platform/extensions/ExtensionHost.h"
#include "platform/extensions/ProgramDonor.h"
#include "platform/foundation/Text.h"
#include "platform/scheduling/EventLoopScheduler.h"
#include "quenlet/Extension.h"

namespace quenlet {
namespace {

using Donors = std::vector<std::shared_ptr<ProgramDonor>>;

// All that can be asked. No agent is their receiver: the answers are read here.
Donors findDonors(const ExtensionHost& host, ErrorPtr& unreadable) {
  Donors donors;
  // Everything is emitted before subscribe() returns.
  static_cast<void>(host.currentExtensionsObservable({})->subscribe(
      Observer<DonorObjectPtr>::observerWithResultBlock(
          [&](const DonorObjectPtr& object) {
            if (auto donor = std::dynamic_pointer_cast<ProgramDonor>(object)) {
              donors.push_back(std::move(donor));
            }
          },
          nullptr, [&](const ErrorPtr& error) { unreadable = error; })));
  return donors;
}

// Leaves the donors of `bundles`, and gives those of `bundles` that are not there.
std::vector<std::string> keepDonorsOf(const std::vector<std::string>& bundles, Donors& donors) {
  const auto isOf = [](const std::string& bundle) {
    return [&bundle](const std::shared_ptr<ProgramDonor>& donor) {
      return canonicallyEqual(donor->bundleIdentifier(), bundle);
    };
  };
  std::vector<std::string> missing;
  Donors kept;
  for (const std::string& bundle : bundles) {
    const auto found = std::find_if(donors.begin(), donors.end(), isOf(bundle));
    if (found == donors.end()) {
      missing.push_back(bundle);
    } else if (std::find(kept.begin(), kept.end(), *found) == kept.end()) {
      kept.push_back(*found);
    }
  }
  donors = std::move(kept);
  return missing;
}

DonorAnswer failure(const std::string& bundle, ErrorPtr error) {
  return {bundle, Result<DonationValues>::failure(std::move(error))};
}

void waitForAnswers(const Donors& donors, EventLoop& loop, std::vector<DonorAnswer>& answers) {
  std::size_t unanswered = donors.size();
  if (unanswered == 0) return;
  for (const auto& donor : donors) {
    const std::size_t place = answers.size();
    answers.push_back(failure(donor->bundleIdentifier(),
                              makeExtensionError(ExtensionErrorCode::ended, "it was not asked")));
    // Called while the loop runs, and once for each.
    donor->fetchAllValuesWithReason(
        Extension::donationsEnabled,
        [&answers, &loop, &unanswered, place](Result<DonationValues> donated) {
          answers[place].donated = std::move(donated);
          if (--unanswered == 0) loop.stop();
        });
  }
  loop.run();
}

}  // namespace

DonorAnswers DonorAnswers::ask(std::shared_ptr<const ExtensionCatalog> manifests,
                               const std::vector<std::string>& bundles) {
  EventLoop loop;
  const auto onLoop = std::make_shared<EventLoopScheduler>(loop);
  const ExtensionHost host(std::move(manifests), {loop, onLoop, onLoop});
  DonorAnswers answers;
  Donors donors = findDonors(host, answers.unreadable);
  if (!bundles.empty()) {
    for (const std::string& bundle : keepDonorsOf(bundles, donors)) {
      answers.donors.push_back(
          failure(bundle, makeExtensionError(ExtensionErrorCode::notInstalled,
                                             "no donor extension is installed for it")));
    }
  }
  waitForAnswers(donors, loop, answers.donors);
  return answers;
}

}  // namespace quenlet
