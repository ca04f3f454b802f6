#include "tools/owner/OwnersDonations.h"

#include <algorithm>
#include <utility>

#include "platform/foundation/PropertyListError.h"
#include "platform/ipc/ServiceInterface.h"

namespace quenlet {
namespace {

using Outcome = OwnersDonations::Outcome;
using Undone = OwnersDonations::Undone;
using Entries = std::vector<JournalEntry>;

std::string identifierOf(const DonationValuePtr& value) {
  return value->decoded().origin.donationIdentifier;
}

DonationValues allOf(const std::vector<DonatedFile>& files) {
  DonationValues values;
  for (const DonatedFile& file : files) {
    values.insert(values.end(), file.donated.begin(), file.donated.end());
  }
  return values;
}

// What the donation of `files` replaces or removes, in the order of the list.
DonationValues replacedBy(const std::vector<DonatedFile>& files, const Entries& former,
                          const HeldDonations& held) {
  DonationKeySet keys;
  for (const DonatedFile& file : files) {
    if (file.isWhole) keys.merge(held.keysFrom(file, former));
  }
  for (const DonationValuePtr& value : allOf(files)) keys.insert(value->donationKey());
  DonationValues replaced;
  for (const DonationValuePtr& value : held.list()) {
    if (keys.contains(value->donationKey())) replaced.push_back(value);
  }
  return replaced;
}

// Counts what the agent took, whose keys go to `taken`, and what not, whose identifiers it gives.
std::vector<std::string> countGiven(const std::vector<DonatedFile>& files,
                                    const HeldDonations& held, Outcome& outcome,
                                    DonationKeySet& taken) {
  std::vector<std::string> leftOut;
  DonationKeySet refused;
  for (const DonatedFile& file : files) {
    OwnersDonations::Given& given = outcome.files.emplace_back();
    for (const DonationValuePtr& value : file.donated) {
      if (held.hasGift(*value)) {
        if (taken.insert(value->donationKey()).second) ++given.donated;
      } else if (refused.insert(value->donationKey()).second) {
        given.leftOut.push_back(value);
        leftOut.push_back(identifierOf(value));
      }
    }
  }
  return leftOut;
}

bool leavesOutcomeOpen(const Error& error) {
  return error.domain() == ServiceErrorDomain &&
         (error.code() == static_cast<int>(ServiceErrorCode::connectionBroken) ||
          error.code() == static_cast<int>(ServiceErrorCode::timedOut));
}

ErrorPtr afterDonation(const Error& error) {
  return makeError(
      error.domain(), error.code(),
      "the values were donated, but what comes then failed: " + error.debugDescription());
}

}  // namespace

Result<Outcome> OwnersDonations::donate(const std::vector<DonatedFile>& files,
                                        const std::string& key) const {
  using Donated = Result<Outcome>;
  const auto list = agent.donations();
  if (!list.ok()) return Donated::failure(list.error());
  Outcome outcome;
  Entries former;
  if (auto entries = journal.entries(); entries.ok()) {
    former = std::move(entries).takeValue();
  } else if (entries.error()->domain() == PropertyListErrorDomain) {
    outcome.beganNewJournal = true;
  } else {
    return Donated::failure(entries.error());
  }
  JournalEntry noted{.when = now, .files = files};
  noted.replaced = replacedBy(files, former, HeldDonations(list.value()));
  const Result<JournalEntry> entry = journal.add(std::move(noted), key);
  if (!entry.ok()) return Donated::failure(entry.error());
  outcome.kept = entry.value().kept;
  const std::int64_t number = entry.value().number;
  if (ErrorPtr error = giveNoted(allOf(files), number)) return Donated::failure(std::move(error));
  const ErrorPtr error = finish(files, former, number, outcome);
  return error ? Donated::failure(afterDonation(*error)) : Donated::success(std::move(outcome));
}

// The note of a donation that was refused would be in undo's way. If it cannot be removed, undo
// finds nothing to take back and removes it then.
ErrorPtr OwnersDonations::giveNoted(const DonationValues& values, std::int64_t number) const {
  ErrorPtr error = agent.donate(values);
  if (error && !leavesOutcomeOpen(*error)) static_cast<void>(journal.remove(number));
  return error;
}

ErrorPtr OwnersDonations::finish(const std::vector<DonatedFile>& files, const Entries& former,
                                 std::int64_t number, Outcome& outcome) const {
  const auto list = agent.donations();
  if (!list.ok()) return list.error();
  const HeldDonations held(list.value());
  DonationKeySet staying;
  const std::vector<std::string> leftOut = countGiven(files, held, outcome, staying);
  std::vector<std::string> gone;
  for (std::size_t place = 0; place < files.size(); ++place) {
    if (!files[place].isWhole) continue;
    const DonationKeySet keys = held.keysFrom(files[place], former);
    for (const DonationValuePtr& value : held.list()) {
      const Fingerprint& key = value->donationKey();
      if (!keys.contains(key) || !staying.insert(key).second) continue;
      gone.push_back(identifierOf(value));
      ++outcome.files[place].removed;
    }
  }
  // Noted first: if the removal fails, undo and why still know of it.
  if (!leftOut.empty()) {
    if (ErrorPtr error = journal.setLeftOut(number, leftOut)) return error;
  }
  return agent.remove(gone);
}

Result<std::optional<Undone>> OwnersDonations::undo() const {
  using Attempt = Result<std::optional<Undone>>;
  auto entries = journal.entries();
  if (!entries.ok()) return Attempt::failure(entries.error());
  if (entries.value().empty()) return Attempt::success(std::nullopt);
  Result<Undone> undone = takeBack(std::move(entries).takeValue().back());
  if (!undone.ok()) return Attempt::failure(undone.error());
  if (ErrorPtr error = journal.remove(undone.value().entry.number)) {
    return Attempt::failure(std::move(error));
  }
  return Attempt::success(std::move(undone).takeValue());
}

// The replaced values that come back; counts those that do not.
DonationValues OwnersDonations::returning(const HeldDonations& held, Undone& undone) const {
  const DonationValues given = allOf(undone.entry.files);
  DonationKeySet gifts;
  for (const DonationValuePtr& value : given) {
    if (held.hasGift(*value)) gifts.insert(value->donationKey());
  }
  DonationValues values;
  for (const DonationValuePtr& value : undone.entry.replaced) {
    const bool isFree = !held.inPlaceOf(*value) || gifts.contains(value->donationKey());
    if (held.hasGift(*value)) continue;
    if (!isFree) {
      ++undone.changed;
    } else if (value->expirationDate() <= now) {
      ++undone.expired;
    } else {
      values.push_back(value);
    }
  }
  undone.removed = gifts.size();
  return values;
}

Result<Undone> OwnersDonations::takeBack(JournalEntry entry) const {
  using Attempt = Result<Undone>;
  Undone undone{.entry = std::move(entry)};
  const auto before = agent.donations();
  if (!before.ok()) return Attempt::failure(before.error());
  const DonationValues values = returning(HeldDonations(before.value()), undone);
  if (ErrorPtr error = agent.donate(values)) return Attempt::failure(std::move(error));
  const auto after = agent.donations();
  if (!after.ok()) return Attempt::failure(after.error());
  const HeldDonations held(after.value());
  for (const DonationValuePtr& value : values) {
    if (held.hasGift(*value)) {
      ++undone.restored;
    } else {
      undone.leftOut.push_back(value);
    }
  }
  std::vector<std::string> gone;
  for (const DonationValuePtr& value : allOf(undone.entry.files)) {
    if (held.hasGift(*value)) gone.push_back(identifierOf(value));
  }
  if (ErrorPtr error = agent.remove(gone)) return Attempt::failure(std::move(error));
  return Attempt::success(std::move(undone));
}

}  // namespace quenlet
