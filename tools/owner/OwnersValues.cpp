#include "tools/owner/OwnersValues.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "platform/preferences/UserPreferences.h"
#include "tools/owner/AgentDonations.h"
#include "tools/owner/DonationJournal.h"
#include "tools/owner/OwnersDecisions.h"

namespace quenlet {
namespace {

template <typename T>
void takeOrNote(Result<std::vector<T>> read, std::vector<T>& values,
                std::vector<ErrorPtr>& problems) {
  if (read.ok()) {
    values = std::move(read).takeValue();
  } else {
    problems.push_back(read.error());
  }
}

}  // namespace

Result<StatedDonations> listedDonations(CorvelProtocol& agent) {
  using Listed = Result<StatedDonations>;
  const Result<DonationListPtr> donations = donationsOf(agent);
  if (!donations.ok()) return Listed::failure(donations.error());
  const Result<OwnCard> ownCard = OwnCard::read();
  if (!ownCard.ok()) return Listed::failure(ownCard.error());
  return Listed::success(statesOf(donations.value(), ownCard.value()));
}

Result<OwnersValues> OwnersValues::read(CorvelProtocol& agent, Date now) {
  using Read = Result<OwnersValues>;
  Result<OwnCard> own = OwnCard::read();
  if (!own.ok()) return Read::failure(own.error());
  const auto user = UserPreferences::open();
  if (!user.ok()) return Read::failure(user.error());
  const Result<OwnersDecisions> rejections = OwnersDecisions::open();
  if (!rejections.ok()) return Read::failure(rejections.error());
  const Result<DonationJournal> journal = DonationJournal::open();
  if (!journal.ok()) return Read::failure(journal.error());

  OwnersValues values{.donationsEnabled = user.value()->preferences().isDonationsEnabled(),
                      .own = std::move(own).takeValue()};
  if (values.donationsEnabled) {
    const Result<DonationListPtr> donations = donationsOf(agent);
    if (!donations.ok()) return Read::failure(donations.error());
    values.listed = statesOf(donations.value(), values.own);
  }
  OwnerRecords records{.donationsEnabled = values.donationsEnabled, .now = now};
  takeOrNote(rejections.value().all(), records.decisions, values.problems);
  takeOrNote(journal.value().entries(), records.journal, values.problems);
  values.unlisted = unlistedValues(donationsOf(values.listed), records);
  values.decisions = std::move(records.decisions);
  return Read::success(std::move(values));
}

std::vector<UnlistedValue> OwnersValues::missing() const {
  std::vector<UnlistedValue> values;
  std::copy_if(unlisted.begin(), unlisted.end(), std::back_inserter(values),
               [](const UnlistedValue& value) { return value.state != DonationState::absent; });
  return values;
}

}  // namespace quenlet
