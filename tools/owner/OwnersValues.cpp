#include "tools/owner/OwnersValues.h"

#include <tuple>
#include <utility>

#include "client/waitForReply.h"
#include "tools/owner/DonationJournal.h"
#include "tools/owner/OwnersDecisions.h"
#include "tools/owner/UserPreferences.h"

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
  const auto [values, error] = waitForReply<std::shared_ptr<const DonationValues>, ErrorPtr>(
      [&agent](DonationsReply reply) { agent.meCardDonations(std::move(reply)); });
  if (error) return Listed::failure(error);
  const Result<OwnCard> ownCard = OwnCard::read();
  if (!ownCard.ok()) return Listed::failure(ownCard.error());
  return Listed::success(statesOf(values, ownCard.value()));
}

Result<OwnersValues> OwnersValues::read(CorvelProtocol& agent, Date now) {
  using Read = Result<OwnersValues>;
  const auto user = UserPreferences::open();
  if (!user.ok()) return Read::failure(user.error());
  const Result<OwnersDecisions> rejections = OwnersDecisions::open();
  if (!rejections.ok()) return Read::failure(rejections.error());
  const Result<DonationJournal> journal = DonationJournal::open();
  if (!journal.ok()) return Read::failure(journal.error());

  OwnersValues values{.donationsEnabled = user.value()->preferences().isDonationsEnabled()};
  if (values.donationsEnabled) {
    Result<StatedDonations> listed = listedDonations(agent);
    if (!listed.ok()) return Read::failure(listed.error());
    values.listed = std::move(listed).takeValue();
  }
  OwnerRecords records{.donationsEnabled = values.donationsEnabled, .now = now};
  takeOrNote(rejections.value().all(), records.decisions, values.problems);
  takeOrNote(journal.value().entries(), records.journal, values.problems);
  values.unlisted = unlistedValues(donationsOf(values.listed), records);
  return Read::success(std::move(values));
}

}  // namespace quenlet
