#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using testing::HasSubstr;

class WhyWordTest : public ProcessTest {
 protected:
  // A card with a UID, so that its values keep their identifiers when they change.
  void give(const std::string& bundle, const std::string& fullName,
            std::vector<std::string> lines) {
    lines.emplace_back("UID:" + bundle);
    EXPECT_EQ(donate(bundle, fullName, lines).code, 0) << bundle;
  }
  void expect(std::vector<std::string> words, int code, const std::vector<std::string>& texts) {
    const Ran ran = quenlet(words);
    EXPECT_EQ(ran.code, code) << words.back() << ran.err;
    for (const std::string& text : texts) EXPECT_THAT(ran.out + ran.err, HasSubstr(text));
  }
};

TEST_F(WhyWordTest, TellsEachReasonOfWhatTheAgentLists) {
  startAgent();
  expect({"why"}, 0, {"There are no donations: quenlet donate FILE makes a start.\n"});
  expect({"card"}, 0, {"The card is empty: nothing is donated."});
  give("org.bank", "Robin Hartwell", {"TEL:+1 202 555 0110", "EMAIL:rob@gmail.com"});
  expect({"why"}, 0, {"Every donation is on the card.\n"});
  expect({"why", "+1 (202) 555-0110"}, 0, {"Number 3, phoneNumber, from org.bank", "On the card."});
  give("org.shop", "Jo Hartwell", {"TEL:+1 202 555 0110", "TEL:+1 202 555 0120"});
  expect({"why", "Jo Hartwell"}, 0,
         {"Names that disagree.", "org.shop calls you Jo Hartwell, org.bank calls you Robin"});
  expect({"why", "--json"}, 0, {R"("state":"givenBefore","because":"org.bank gave it first")"});
  expect({"card"}, 0, {"\n\n3 donations are not shown: quenlet why\n"});
  expect({"list", "--hidden", "--bundle", "org.shop"}, 0, {"namesDisagree", "givenBefore"});
  expect({"list", "--expiring=89"}, 0, {"None of 6 donations is like that.\n"});
  expect({"list", "--expiring=91"}, 0, {"+1 202 555 0120"});
  expect({"why", "+1 202 555 0199"}, 1, {"quenlet: not-found 1: ", "hint: quenlet list"});

  writeFile(ownersCard, cardText("Robin Hartwell", {"EMAIL:rob@googlemail.com"}));
  EXPECT_TRUE(eventually([this] { return !cardHas("Robin"); }));
  const std::string silenced = "org.shop calls you Jo Hartwell; your own card says Robin Hartwell.";
  expect({"why"}, 0,
         {"5 of 6 donations are not shown.\n\nSilenced: ", silenced, "Already on your own card\n",
          "Your own card already has it as rob@googlemail.com, which is the same mailbox."});
  expect({"why", "6"}, 0, {"+1 202 555 0120\n", "Number 6,", silenced});
  expect({"list", "--json"}, 0, {R"("number":6,"state":"silenced","because":"org.shop calls)"});
  writeFile(ownersCard, cardText("Jo Hartwell", {}));
  EXPECT_TRUE(eventually([this] { return cardHas("0120"); }));
  expect({"why", "rob@gmail.com"}, 0, {"org.bank calls you Robin Hartwell; your own card says Jo"});
  mayRemark = true;
}

}  // namespace
}  // namespace quenlet
