#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using testing::HasSubstr;

class WhyWordTest : public ProcessTest {
 protected:
  // A card with a UID, so that its values keep their identifiers when they change.
  void give(const std::string& bundle, const std::string& name, std::vector<std::string> lines) {
    lines.emplace_back("UID:" + bundle);
    donate(bundle, name, lines);
  }
};

TEST_F(WhyWordTest, TellsEachReasonOfWhatTheAgentLists) {
  startAgent();
  expect("why", 0, {"There are no donations: quenlet donate FILE makes a start.\n"});
  expect("card", 0, {"The card is empty: nothing is donated."});
  give("org.bank", "Robin Hartwell", {"TEL:+1 202 555 0110", "EMAIL:rob@gmail.com"});
  expect("why", 0, {"Every donation is on the card.\n"});
  expect("why '+1 (202) 555-0110'", 0, {"Number 3, phone, from org.bank", "On the card."});
  give("org.shop", "Jo Hartwell", {"TEL:+1 202 555 0110", "TEL:+1 202 555 0120"});
  expect("why 'Jo Hartwell'", 0,
         {"Names that disagree.", "org.shop calls you Jo Hartwell, org.bank calls you Robin"});
  expect("why --json", 0, {R"("state":"givenBefore","because":"org.bank gave it first")"});
  expect("card", 0, {"\n\n3 donations are not shown: quenlet why\n"});
  expect("list --hidden --bundle org.shop", 0, {"names disagree", "given before"});
  expect("list --expiring=89", 0, {"None of 6 donations is like that.\n"});
  expect("list --expiring=91", 0, {"+1 202 555 0120"});
  expect("why '+1 202 555 0199'", 1, {"quenlet: no-match 1: ", "hint: quenlet list"});

  writeOwnersCard(cardText("Robin Hartwell", {"EMAIL:rob@googlemail.com"}));
  EXPECT_TRUE(eventually([this] { return !cardHas("Robin"); }));
  const std::string silenced = "org.shop calls you Jo Hartwell; your own card says Robin Hartwell.";
  expect("why", 0,
         {"5 of 6 donations are not shown.\n\nSilenced: ", silenced, "Already on your own card\n",
          "Your own card already has it as rob@googlemail.com, which is the same mailbox."});
  expect("why 6", 0, {"+1 202 555 0120\n", "Number 6,", silenced});
  expect("list --json", 0, {R"("number":6,"state":"silenced","because":"org.shop calls)"});
  writeOwnersCard(cardText("Jo Hartwell", {}));
  EXPECT_TRUE(eventually([this] { return cardHas("0120"); }));
  expect("why rob@gmail.com", 0, {"org.bank calls you Robin Hartwell; your own card says Jo"});
  mayRemark = true;
}

TEST_F(WhyWordTest, TellsWhatBecameOfValuesThatTheAgentNoLongerLists) {
  startAgent();
  give("org.a", "Robin Hartwell", {"TEL:none", "TEL:+1 202 555 0110"});
  give("org.a", "Robin Hartwell", {"TEL:none", "TEL:+1 202 555 0130"});
  give("org.b", "robin hartwell", {"TEL:+1 202 555 0140"});
  writeFile(donatedCard, cardText("Robin Hartwell", {"EMAIL:rob@example.com"}));
  expect("why '+1 202 555 0110'", 0,
         {"Replaced by a later donation.", "org.a gave another value under its identifier on"});
  expect("reject '+1 202 555 0130'", 0, {"1 donation, from org.a"});
  expect("donate " + donatedCard + " --bundle org.c --expires 0.00006", 0, {"2 donated"});
  ASSERT_TRUE(eventually([this] {
    return quenlet("why rob@example.com").out.find("It has expired") != std::string::npos;
  }));
  stopAgent();
  startAgent();
  expect("why", 0,
         {"Given again later\n", "Rejected\n  You rejected it, so it stays away",
          "+1 202 555 0130  phone  org.a", "Expired\n  It expired on ", "rob@example.com",
          "Left out when a file was read\n  Line 4 of its file (TEL) has no value"});
  disableDonations();
  expect("why", 0, {"Donations are off, so the agent keeps and shows none: quenlet enable\n"});
  expect("why '+1 202 555 0140'", 1, {"no-match 1", "hint: donations are off: quenlet"});
}

}  // namespace
}  // namespace quenlet
