#include "tools/commands/DonationRemarks.h"

#include <algorithm>
#include <set>
#include <utility>

#include "tools/owner/OwnersDecisions.h"
#include "tools/presentation/TerminalText.h"
#include "tools/presentation/Wording.h"

namespace quenlet {
namespace {

// How many names, or lines, are shown of a long list.
constexpr std::size_t mostShown = 10;

// "TEL in line 5, line 7"
std::string placesOf(const std::vector<SkippedEntry>& skipped) {
  std::string text;
  for (std::size_t place = 0; place < std::min(skipped.size(), mostShown); ++place) {
    if (place > 0) text += ", ";
    if (!skipped[place].property.empty()) text += skipped[place].property + " in ";
    text += "line " + std::to_string(skipped[place].line);
  }
  return text + (skipped.size() > mostShown ? " …" : "");
}

}  // namespace

std::vector<std::string> firstOf(std::vector<std::string> lines) {
  if (lines.size() <= mostShown) return lines;
  const std::size_t more = lines.size() - mostShown;
  lines.resize(mostShown);
  lines.push_back("… and " + std::to_string(more) + " more");
  return lines;
}

std::vector<std::string> reasonsOf(const DonationValues& leftOut) {
  const std::size_t decided = countDecided(leftOut);
  const std::size_t others = leftOut.size() - decided;
  std::vector<std::string> reasons;
  if (decided > 0) {
    reasons.push_back(numberText(decided) + " left out: you rejected " +
                      (decided == 1 ? "it" : "them"));
  }
  if (others > 0) reasons.push_back(numberText(others) + " left out: " + notTaken);
  return reasons;
}

std::string textOf(const OwnersDonations::Given& given, const std::string& bundle) {
  std::string text = std::to_string(given.donated) + " donated as " + bundle;
  for (const std::string& reason : reasonsOf(given.leftOut)) text += ", " + reason;
  if (given.removed > 0) {
    text += ", " + std::to_string(given.removed) + " removed: given before, but not now";
  }
  return text;
}

bool tellOfFaults(const std::vector<CardInput>& inputs, const Session& session) {
  bool areAllRead = true;
  for (const CardInput& input : inputs) {
    for (const ErrorPtr& failure : input.failures) {
      session.warn("skipped a card: " + failure->debugDescription());
    }
    if (!input.isWhole()) {
      areAllRead = false;
      session.warn(input.path + ": its earlier values stay, since part of it cannot be read");
    }
    std::size_t skipped = 0;
    std::vector<SkippedEntry> entries;
    for (const VCard& card : input.cards) {
      skipped += card.skippedEntries;
      entries.insert(entries.end(), card.skipped.begin(), card.skipped.end());
    }
    if (skipped == 0) continue;
    session.warn(input.path + ": skipped " + counted(skipped, "entry", "entries") +
                 " without a usable value: " + placesOf(entries));
  }
  return areAllRead;
}

void tellOfRepeated(const std::vector<DonatedFile>& files, const Session& session) {
  std::set<Fingerprint> keys;
  std::size_t all = 0;
  for (const DonatedFile& file : files) {
    for (const DonationValuePtr& value : file.donated) keys.insert(value->donationKey());
    all += file.donated.size();
  }
  if (all == keys.size()) return;
  session.warn(counted(all - keys.size(), "value") +
               " will replace others of these files, whose cards have the same UID or place");
}

void tellOfJournal(const OwnersDonations::Outcome& outcome, const Session& session) {
  if (outcome.beganNewJournal) {
    session.warn(
        "the journal of donations was damaged, and a copy of it was kept; earlier donations "
        "can no longer be undone");
  }
  if (outcome.kept == JournalEntry::Kept::frame) {
    session.warn("this donation is too large for \"quenlet undo\"");
  } else if (outcome.kept == JournalEntry::Kept::allButFormerImages) {
    session.warn("\"quenlet undo\" will not bring back the former image, which is too large");
  }
}

}  // namespace quenlet
