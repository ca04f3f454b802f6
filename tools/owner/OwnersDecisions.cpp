#include "tools/owner/OwnersDecisions.h"

#include <algorithm>
#include <iterator>
#include <set>

#include "platform/contacts/ContactStore.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/UserDirectories.h"

namespace quenlet {

Result<OwnersDecisions> OwnersDecisions::open() {
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Result<OwnersDecisions>::failure(home.error());
  return Result<OwnersDecisions>::success(OwnersDecisions(
      FeedbackFile(home.value() / FeedbackPath, std::make_shared<PosixDataProxy>())));
}

Result<std::vector<FeedbackDecision>> OwnersDecisions::all() const {
  return file.decisions(MeCardContactIdentifier);
}

Result<std::size_t> OwnersDecisions::takeBack(
    const std::vector<FeedbackDecision>& decisions) const {
  std::vector<std::string> keys;
  keys.reserve(decisions.size());
  for (const FeedbackDecision& decision : decisions) keys.push_back(decision.key);
  return file.remove(keys, MeCardContactIdentifier);
}

std::size_t countDecided(const DonationValues& values) {
  const Result<OwnersDecisions> opened = OwnersDecisions::open();
  if (values.empty() || !opened.ok()) return 0;
  const auto decisions = opened.value().all();
  if (!decisions.ok()) return 0;
  return valuesDecidedOn(values, decisions.value()).size();
}

DonationValues valuesDecidedOn(const DonationValues& values,
                               const std::vector<FeedbackDecision>& decisions) {
  std::set<std::string> keys;
  for (const FeedbackDecision& decision : decisions) keys.insert(decision.key);
  DonationValues decided;
  std::copy_if(values.begin(), values.end(), std::back_inserter(decided),
               [&](const DonationValuePtr& value) {
                 return keys.contains(FeedbackContent::keyOfValue(value->value()));
               });
  return decided;
}

}  // namespace quenlet
