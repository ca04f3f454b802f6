#include "tools/owner/UnlistedValues.h"

#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "platform/feedback/FeedbackContent.h"

namespace quenlet {
namespace {

std::string dayOf(Date date) { return date.iso8601().substr(0, 10); }

std::string givenOn(const DonationValuePtr& donation) {
  return dayOf(donation->decoded().origin.donationDate);
}

// Whether the owner would call both the same value. The journal keeps no bytes of images.
bool isSameValue(const DonationValue& a, const DonationValue& b) {
  if (a.kind() != b.kind()) return false;
  if (a.kind() == DonationKind::imageData) return true;
  return a.kind() == DonationKind::name ? a.value() == b.value() : a.contentKey() == b.contentKey();
}

std::string becauseDecided(FeedbackStatus status) {
  return status == FeedbackStatus::rejected
             ? "You rejected it, so it stays away when it is donated again"
             : "A contacts program has noted that you took it over";
}

// Goes through what was given, latest first, and collects what is not listed.
class JournalReader final {
 public:
  JournalReader(const DonationValues& list, const OwnerRecords& ownerRecords)
      : records(ownerRecords) {
    for (const DonationValuePtr& donation : list) latest.emplace(donation->donationKey(), donation);
    for (const FeedbackDecision& decision : records.decisions) addDecision(decision);
  }

  void read(const JournalEntry& entry) {
    const std::unordered_set<std::string, TextHash> leftOut(entry.leftOut.begin(),
                                                            entry.leftOut.end());
    for (const DonatedFile& file : entry.files) {
      for (const DonationValuePtr& donation : file.donated) {
        const std::string identifier = donation->decoded().origin.donationIdentifier;
        leftOut.contains(identifier) ? addLeftOut(donation) : addGiven(donation);
      }
    }
    for (const DonationValuePtr& donation : entry.replaced) addReplaced(donation, entry);
    for (const DonatedFile& file : entry.files) addSkipped(file);
  }
  [[nodiscard]] std::vector<UnlistedValue> take() && { return std::move(unlisted); }

 private:
  void addDecision(const FeedbackDecision& decision) {
    const bool rejected = decision.status == FeedbackStatus::rejected;
    decided.emplace(decision.key, unlisted.size());
    unlisted.push_back({rejected ? DonationState::rejected : DonationState::confirmed,
                        becauseDecided(decision.status), decision.value});
  }

  void add(DonationState state, std::string because, const DonationValuePtr& donation) {
    const std::string content = FeedbackContent::contentOfValue(*donation).key;
    const DonationOrigin origin = donation->decoded().origin;
    const auto same = decided.find(content);
    if (same == decided.end()) {
      // What a donation replaced was often given by another that the journal has, too.
      if (!told.insert(origin.donationIdentifier + '\n' + content).second) return;
      unlisted.push_back(
          {state, std::move(because), donation->value(), donation, origin.bundleIdentifier});
    } else if (UnlistedValue& known = unlisted[same->second]; !known.donation) {
      // The decision stands; who gave the value is news.
      known.donation = donation;
      known.bundleIdentifier = origin.bundleIdentifier;
    }
  }

  // The agent keeps what it held before under that identifier.
  void addLeftOut(const DonationValuePtr& donation) {
    add(DonationState::absent,
        "The agent did not take it when it was donated on " + givenOn(donation), donation);
  }

  void addGiven(const DonationValuePtr& donation) {
    const auto [place, isLatest] = latest.emplace(donation->donationKey(), donation);
    if (!isLatest) return addIfOther(donation, *place->second);
    const Date expires = donation->expirationDate();
    if (!records.donationsEnabled) {
      add(DonationState::donationsOff, "Donations are off, so the agent keeps none", donation);
    } else if (expires.timeIntervalSince(records.now) <= 0) {
      add(DonationState::expired, "It expired on " + dayOf(expires), donation);
    } else {
      add(DonationState::absent,
          "It was donated on " + givenOn(donation) + " and has been taken back since", donation);
    }
  }

  void addReplaced(const DonationValuePtr& donation, const JournalEntry& by) {
    const auto [place, isLatest] = latest.emplace(donation->donationKey(), donation);
    if (!isLatest) return addIfOther(donation, *place->second);
    add(DonationState::replaced, "Its file was donated again on " + dayOf(by.when) + " without it",
        donation);
  }

  void addIfOther(const DonationValuePtr& donation, const DonationValue& later) {
    if (isSameValue(*donation, later)) return;
    const DonationOrigin origin = later.decoded().origin;
    add(DonationState::replaced,
        origin.bundleIdentifier + " gave another value under its identifier on " +
            dayOf(origin.donationDate),
        donation);
  }

  void addSkipped(const DonatedFile& file) {
    // What a file was like when it was donated before is of no use to anybody.
    if (!files.insert(file.bundleIdentifier + '\n' + file.pseudonym).second) return;
    for (const SkippedEntry& entry : file.skipped) {
      const std::string what = entry.property.empty() ? "no property" : entry.property;
      unlisted.push_back({.state = DonationState::skipped,
                          .because = "Line " + std::to_string(entry.line) + " of its file (" +
                                     what + ") has no value that could be used",
                          .bundleIdentifier = file.bundleIdentifier});
    }
  }

  const OwnerRecords& records;
  std::vector<UnlistedValue> unlisted;
  // What is, or was last, held under each identifier.
  std::unordered_map<Fingerprint, DonationValuePtr, FingerprintHash> latest;
  std::unordered_map<std::string, std::size_t, TextHash> decided;
  std::unordered_set<std::string, TextHash> told;
  std::unordered_set<std::string, TextHash> files;
};

}  // namespace

std::vector<UnlistedValue> unlistedValues(const DonationValues& list, const OwnerRecords& records) {
  JournalReader reader(list, records);
  for (auto entry = records.journal.rbegin(); entry != records.journal.rend(); ++entry) {
    reader.read(*entry);
  }
  return std::move(reader).take();
}

}  // namespace quenlet
