#pragma once

#include <memory>
#include <string>
#include <vector>

#include "model/DonationValue.h"
#include "platform/extensions/ExtensionCatalog.h"
#include "quenlet/Result.h"

namespace quenlet {

// What donor extensions say to the question for all of their values.
struct DonorAnswer final {
  std::string bundleIdentifier;
  // All of its own bundle; an error in ExtensionErrorDomain, or the donor's.
  Result<DonationValues> donated;
};

struct DonorAnswers final {
  // In the order in which the agent finds them.
  std::vector<DonorAnswer> donors;
  // Set when a directory of manifests cannot be read: donors may be missing.
  ErrorPtr unreadable;

  // Starts the programs and waits for all answers, under the limits that the agent has for them.
  // The donors of `bundles`, or all when there is none; one that is not installed answers with an
  // error.
  [[nodiscard]] static DonorAnswers ask(std::shared_ptr<const ExtensionCatalog> manifests,
                                        const std::vector<std::string>& bundles);
};

}  // namespace quenlet
