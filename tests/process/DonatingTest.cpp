#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

using DonatingTest = ProcessTest;

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
  const std::vector<std::string> mailCard = {
      "EMAIL:anna@example.org", "TEL:+49 30 1234567",
      "PHOTO;ENCODING=b:R0lGODlhAQABAAAAADs=", "UID:urn:uuid:1"};
  startAgent();
  EXPECT_EQ(donate("com.example.mail", "Anna Berg", mailCard).code, 0);
  EXPECT_EQ(quenlet({"reject", "com.example.mail:urn%3Auuid%3A1:email:1"}).code, 0);
  EXPECT_THAT(card(), AllOf(HasSubstr("14 bytes, GIF"), HasSubstr("from com.example.mail")));
  EXPECT_EQ(countDonations(), 3) << "no more than the address is gone";
  EXPECT_EQ(stopAgent(), 0);
  startAgent();
  EXPECT_EQ(donate("com.example.shop", "Anna Berg", mailCard).code, 0);
  EXPECT_EQ(countDonations(), 6);
  EXPECT_EQ(quenlet({"forget", "com.example.mail"}).code, 0);
  EXPECT_EQ(countDonations(), 3);
  EXPECT_THAT(quenlet({"list"}).out, Not(HasSubstr("anna@example.org")));
}

}  // namespace
}  // namespace quenlet
