#include "donors/mail/MailDonations.h"

#include <gtest/gtest.h>

#include <cmath>

namespace quenlet {
namespace {

class MailDonationsTest : public testing::Test {
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
  static long days(SourceDonor& asked, const Donation& donation) {
    const auto date = asked.renew(donation);
    if (!date.ok()) return -2;
    return std::lround((date.value().secondsSince1970() - Date::now().secondsSince1970()) / 86400);
  }

  MailIdentities identities = MailIdentities::success(
      {{"ann@example.org", "Ann Berg", {"noreply@example.org", "Ann <ann@example.org>"}},
       {"list", "News Letter", {"news+1@example.org"}}});
  SourceDonor donor{[this] { return mailDonations("bundle", identities); }};
};

TEST_F(MailDonationsTest, DonatesEachIdentityAsAClusterWhoseIdentifiersSayNothing) {
  EXPECT_EQ(donated(), std::vector<std::string>({":email:2 ann@example.org", ":name Ann"}));
  const auto all = donor.allDonations(Extension::donationsEnabled).value();
  for (const Donation& donation : all) {
    EXPECT_EQ(donation.bundleIdentifier, "bundle");
    EXPECT_EQ(donation.clusterIdentifier, all[0].clusterIdentifier);
    EXPECT_TRUE(donation.clusterIdentifier->starts_with("bundle:"));
    EXPECT_EQ(donation.donationIdentifier.find("ann"), std::string::npos);
  }
}

TEST_F(MailDonationsTest, RenewsWhatIsThereWithdrawsWhatIsGoneAndKeepsWhatCannotBeRead) {
  const Donation before = donor.allDonations(Extension::donationsEnabled).value()[0];
  EXPECT_EQ(days(donor, before), 30);
  const auto asked = [this](const Donation& donation) {
    SourceDonor next([this] { return mailDonations("bundle", identities); });
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
