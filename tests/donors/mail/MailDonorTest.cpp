#include "donors/mail/MailDonor.h"

#include <gtest/gtest.h>

#include <cmath>

#include "donors/mail/Mailbox.h"

namespace quenlet {
namespace {

TEST(MailboxTest, TellsTheOwnersAddressesAndNamesFromOthers) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"ann@example.org", "ann@example.org", "none"},
      {" Ann Berg <ann@example.org> ", "ann@example.org", "Ann|Berg"},
      {"\"Berg, Ann\" <ann@example.org>", "ann@example.org", "Ann|Berg"},
      {"b@example.org <ann@example.org>", "ann@example.org", "none"},
      {"Ann Berg", "none", "Ann|Berg"},
      {"Ann", "none", "none"},
      {"rhartwell", "none", "none"},
      {"Ann Berg <>", "none", "Ann|Berg"},
      {"ann@localhost", "none", "none"},
      {"ann@example.org berg@example.org", "none", "none"},
      {"ann+shop@example.org", "none", "none"},
      {"No-Reply@example.org", "none", "none"},
      {"1+ann@users.noreply.example.org", "none", "none"},
      {"Ann\x1B[2J Berg", "none", "none"},
      {"Ann \u202EBerg", "none", "none"},
  };
  for (const auto& [text, address, expected] : rows) {
    const auto found = fullName(text);
    EXPECT_EQ(personalAddress(text).value_or("none"), address) << text;
    EXPECT_EQ(found ? *found->givenName + "|" + *found->familyName : "none", expected) << text;
  }
  EXPECT_EQ(splitMailboxes(R"(a, "b, \"c" <d,e>, (f, (g), h) i,, )"),
            std::vector<std::string>({"a", R"("b, \"c" <d,e>)", "(f, (g), h) i"}));
}

class MailDonorTest : public testing::Test {
 protected:
  // "identifier content" of each, in order; or "!" and the error's sentence.
  std::vector<std::string> donated() {
    const auto all = donor.allDonations(Extension::donationsEnabled);
    if (!all.ok()) return {"!" + all.error()->debugDescription()};
    std::vector<std::string> texts;
    for (const Donation& donation : all.value()) {
      const Email* email = std::get_if<Email>(&donation.content);
      texts.push_back(donation.donationIdentifier.substr(donation.clusterIdentifier->size()) + " " +
                      (email ? email->address : *std::get<Name>(donation.content).givenName));
    }
    return texts;
  }
  // In how many whole days the value ends after it is renewed; -2 for an error.
  static long days(MailDonor& asked, const Donation& donation) {
    const auto date = asked.renew(donation);
    if (!date.ok()) return -2;
    return std::lround((date.value().secondsSince1970() - Date::now().secondsSince1970()) / 86400);
  }

  MailIdentities identities = MailIdentities::success(
      {{"ann@example.org", "Ann Berg", {"noreply@example.org", "Ann <ann@example.org>"}},
       {"list", "News Letter", {"news+1@example.org"}}});
  MailDonor donor{"bundle", [this] { return identities; }};
};

TEST_F(MailDonorTest, DonatesEachIdentityAsAClusterWhoseIdentifiersSayNothing) {
  EXPECT_EQ(donated(), std::vector<std::string>({":email:2 ann@example.org", ":name Ann"}));
  const auto all = donor.allDonations(Extension::donationsEnabled).value();
  for (const Donation& donation : all) {
    EXPECT_EQ(donation.bundleIdentifier, "bundle");
    EXPECT_EQ(donation.clusterIdentifier, all[0].clusterIdentifier);
    EXPECT_TRUE(donation.clusterIdentifier->starts_with("bundle:"));
    EXPECT_EQ(donation.donationIdentifier.find("ann"), std::string::npos);
  }
}

TEST_F(MailDonorTest, RenewsWhatIsThereWithdrawsWhatIsGoneAndKeepsWhatCannotBeRead) {
  const Donation before = donor.allDonations(Extension::donationsEnabled).value()[0];
  EXPECT_EQ(days(donor, before), 30);
  const auto asked = [this](const Donation& donation) {
    MailDonor next("bundle", [this] { return identities; });
    return days(next, donation);
  };
  identities = MailIdentities::failure(makeError("domain", 3, "it is empty"));
  EXPECT_EQ(donated(), std::vector<std::string>({"!it is empty"}));
  EXPECT_EQ(days(donor, before), -2) << "what it had read before does not count";
  EXPECT_EQ(asked(before), -2);
  identities = MailIdentities::success(
      {{"ann@example.org", "Ann Berg", {"noreply@example.org", "new@example.org"}}});
  EXPECT_EQ(asked(before), -1) << "another address in its place";
  identities = MailIdentities::success({});
  EXPECT_EQ(donated(), std::vector<std::string>());
  EXPECT_EQ(asked(before), -1);
}

}  // namespace
}  // namespace quenlet
