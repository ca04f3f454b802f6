#include "tools/owner/UnlistedValues.h"

#include <gtest/gtest.h>

#include "tests/support/DonationFactory.h"
#include "tests/support/GoldenFile.h"

namespace quenlet {
namespace {

constexpr double day = 86400;

DonationOrigin given(const char* identifier, int onDay, int until = 400) {
  return {"app", identifier, std::nullopt, Date(onDay * day), Date(until * day)};
}

JournalEntry entry(DonationValues donated, DonationValues replaced = {},
                   std::vector<SkippedEntry> skipped = {}) {
  return {.when = Date(20 * day),
          .files = {{"0123", "app", std::move(donated), std::move(skipped)}},
          .replaced = std::move(replaced)};
}

FeedbackDecision decision(const DonationValuePtr& donation, FeedbackStatus status) {
  return {status, donation->value(), FeedbackContent::contentOfValue(*donation).key};
}

using Journal = std::vector<JournalEntry>;

struct Row final {
  const char* name;
  DonationValues list;
  Journal journal;
  std::vector<FeedbackDecision> decisions = {};
  bool donationsEnabled = true;
};

TEST(UnlistedValuesTest, TellWhatBecameOfEachValueOnceAndWithItsLatestReason) {
  const auto mail = [](const char* address, const char* identifier = "1", int onDay = 10) {
    return email(address, given(identifier, onDay));
  };
  const auto tel = phone("+1 202 555 0100", given("2", 10));
  const auto expired = phone("+1 202 555 0101", given("3", 10, 15));
  JournalEntry refused = entry({tel});
  refused.leftOut = {"2"};
  const auto yes = decision(mail("kept@x"), FeedbackStatus::confirmed);
  const auto no = decision(tel, FeedbackStatus::rejected);
  const Row rows[] = {
      {"what is listed is left out", {mail("a@x")}, {entry({mail("a@x", "1", 9)})}},
      {"in another letter case, too", {mail("A@X")}, {entry({mail("a@x", "1", 9)})}},
      {"replaced by what is listed", {mail("b@x", "1", 12)}, {entry({mail("a@x")})}},
      {"replaced, and what replaced it taken back", DonationValues(),
       Journal{entry({mail("a@x")}), entry({mail("b@x", "1", 12)}, {mail("a@x")})}},
      {"its file was given without it", {tel}, {entry({tel}, {tel, mail("a@x")})}},
      {"an image whose bytes are not kept", DonationValues{image("new", given("4", 12))},
       Journal{entry({image("", given("4", 10))})}},
      {"a name that gained a part",
       DonationValues{named({.givenName = "Ann", .middleName = "B."}, given("5", 12))},
       Journal{entry({named({.givenName = "Ann"}, given("5", 10))})}},
      {"expired", {}, {entry({expired})}},
      {"rejected, and known from the journal", {}, {entry({tel}), refused}, {no}},
      {"rejected, and known from nowhere", {}, {}, {yes, no}},
      {"rejected when it was given, and not any more", {}, {refused}},
      {"rejected when it was given in the place of another",
       DonationValues{phone("+1 202 555 0102", given("2", 9))},
       Journal{refused},
       {no}},
      {"donations are off", {}, {entry({tel, expired})}, {}, false},
      {"skipped, of the file's last donation", DonationValues(),
       Journal{entry({}, {}, {{"TEL", 3}}), entry({}, {}, {{"TEL", 4}, {"", 7}})}},
  };
  GoldenParts sentences("tests/tools/owner/unlisted.txt");
  for (const Row& row : rows) {
    std::string told;
    const auto unlisted = unlistedValues(
        row.list, {row.decisions, row.journal, row.donationsEnabled, Date(30 * day)});
    for (const UnlistedValue& value : unlisted) {
      told += std::string(wordFor(value.state)) + " " + value.bundleIdentifier + " " +
              (value.donation ? value.donation->decoded().origin.donationIdentifier : "-") + ": " +
              value.because + "\n";
    }
    EXPECT_EQ(told, sentences.take(row.name)) << row.name;
  }
}

}  // namespace
}  // namespace quenlet
