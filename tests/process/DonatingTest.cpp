#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

using DonatingTest = ProcessTest;

const std::vector<std::string> mailCard = {"EMAIL;TYPE=home:anna@example.org", "TEL:+49 30 1234567",
                                           "UID:urn:uuid:1"};

TEST_F(DonatingTest, MergesTheCardsOfSeveralDonors) {
  startAgent();
  EXPECT_EQ(donate("com.example.mail", "Anna Berg", mailCard).code, 0);
  EXPECT_EQ(donate("com.example.shop", "Anna Maria Berg",
                   {"EMAIL;TYPE=work:Anna@Example.org", "ADR;TYPE=home:;;Weg 1;Ulm;;89073;",
                    "PHOTO;ENCODING=b;TYPE=GIF:R0lGODlhAQABAAAAADs="})
                .code,
            0);
  EXPECT_THAT(card(),
              AllOf(HasSubstr("Anna Maria Berg"), HasSubstr("Weg 1"), HasSubstr("+49 30 1234567"),
                    HasSubstr("14 bytes, GIF"), HasSubstr("from com.example.mail"),
                    HasSubstr("com.example.mail:urn%3Auuid%3A1:email:1"),
                    Not(HasSubstr("Anna@Example.org"))))
      << "an address in another letter case is no second one";
  EXPECT_EQ(countDonations(), 7);

  EXPECT_EQ(quenlet({"remove", "com.example.mail:urn%3Auuid%3A1:email:1"}).code, 0);
  EXPECT_EQ(quenlet({"forget", "com.example.shop"}).code, 0);
  EXPECT_EQ(countDonations(), 2);
}

TEST_F(DonatingTest, RefusesACopyOfTheClientWhileItServesTheClient) {
  startAgent();
  const std::filesystem::path copy = temporary / "copy";
  std::filesystem::copy_file(bin / "quenlet", copy);

  EXPECT_THAT(run({copy, "list"}).err,
              testing::MatchesRegex(
                  "quenlet: ovaro.general-error 4097: connection to corvel: missing entitlement\n"
                  "quenlet: no entitlements file names [^\n]*/copy, [^\n]*\n"));
  EXPECT_TRUE(eventually([this] { return agent->says("\"deniedProcess:executable:\""); }));
  EXPECT_EQ(quenlet({"list"}).code, 0);
  EXPECT_THAT(readFile(agent->processDirectory() / "limits"),
              testing::ContainsRegex("core file size +0 "))
      << "values are not to be left in a file of its memory";

  const Ran stranger = run({"unshare", "--user", "--map-current-user", bin / "quenlet", "list"});
  if (stranger.err.starts_with("unshare: ")) GTEST_SKIP() << stranger.err;
  EXPECT_THAT(stranger.err, HasSubstr("missing entitlement"))
      << "it could name any program as its own";
}

TEST_F(DonatingTest, KeepsRejectedValuesAwayWhoeverDonatesThem) {
  startAgent();
  EXPECT_EQ(donate("com.example.mail", "Anna Berg", mailCard).code, 0);
  EXPECT_EQ(quenlet({"reject", "com.example.mail:urn%3Auuid%3A1:email:1"}).code, 0);
  EXPECT_EQ(countDonations(), 2) << "no more than the address is gone";
  EXPECT_EQ(stopAgent(), 0);
  startAgent();
  EXPECT_EQ(donate("com.example.shop", "Anna Berg", mailCard).code, 0);
  EXPECT_EQ(countDonations(), 4);
  EXPECT_THAT(quenlet({"list"}).out, Not(HasSubstr("anna@example.org")));
}

}  // namespace
}  // namespace quenlet
