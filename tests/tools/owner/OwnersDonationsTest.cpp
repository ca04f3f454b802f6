#include "tools/owner/OwnersDonations.h"

#include "platform/files/PosixDataProxy.h"
#include "platform/ipc/ServiceInterface.h"
#include "tests/support/KeepingAgent.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

class OwnersDonationsTest : public testing::Test {
 protected:
  TemporaryDirectory home;
  DonationJournal journal{home.path(), std::make_shared<PosixDataProxy>()};
  KeepingAgent agent;
  double time = 100;

  // Addresses with these identifiers, given now.
  DonationValues gifts(const std::string& bundle, const std::string& identifiers, Date expires) {
    DonationValues values;
    std::istringstream words(identifiers);
    for (std::string word; words >> word;) {
      values.push_back(email(word, DonationOrigin{bundle, word, {}, Date(time), expires}));
    }
    return values;
  }
  // "donated+left out-removed" or the sentence of the error, after a donation of one file.
  std::string donate(const std::string& bundle, const std::string& identifiers,
                     Date expires = Date(1000), const std::string& file = "f") {
    time += 1;
    const OwnersDonations owner(agent, journal, Date(time));
    const auto outcome =
        owner.donate({{file, bundle, gifts(bundle, identifiers, expires)}}, "0123456789abcdef");
    if (!outcome.ok()) return outcome.error()->debugDescription();
    const OwnersDonations::Given given = outcome.value().files.at(0);
    return std::to_string(given.donated) + "+" + std::to_string(given.leftOut.size()) + "-" +
           std::to_string(given.removed);
  }
  // "removed+restored", what did not come back, or why not.
  std::string undo() {
    time += 1;
    const auto outcome = OwnersDonations(agent, journal, Date(time)).undo();
    if (!outcome.ok()) return outcome.error()->debugDescription();
    if (!outcome.value()) return "nothing";
    const OwnersDonations::Undone& undone = *outcome.value();
    std::string text = std::to_string(undone.removed) + "+" + std::to_string(undone.restored);
    if (undone.expired > 0) text += " expired " + std::to_string(undone.expired);
    if (!undone.leftOut.empty()) text += " left out " + std::to_string(undone.leftOut.size());
    if (undone.changed > 0) text += " changed " + std::to_string(undone.changed);
    return text;
  }
};

TEST_F(OwnersDonationsTest, AFileReplacesWhatItGaveAndUndoGoesBackStepByStep) {
  const std::string own = DonatedFile::bundleOf("f");
  agent.held = gifts("other", "x y", Date(1000));  // at 100
  EXPECT_EQ(donate(own, "a b c"), "3+0-0");
  agent.rejectedIdentifiers = {"b"};
  EXPECT_EQ(donate(own, "b c x"), "2+1-2") << "the former a and b go, though b is left out";
  EXPECT_EQ(agent.heldText(), "x@102 y@100 c@102 ");
  EXPECT_EQ(journal.entries().value().back().leftOut, std::vector<std::string>{"b"});
  agent.rejectedIdentifiers.clear();
  EXPECT_EQ(undo(), "2+4");
  EXPECT_EQ(agent.heldText(), "x@100 y@100 c@101 a@101 b@101 ");
  EXPECT_EQ(undo(), "3+0");
  EXPECT_EQ(agent.heldText(), "x@100 y@100 ");
  EXPECT_EQ(undo(), "nothing");
}

TEST_F(OwnersDonationsTest, TellsHowMuchOfADonationUndoWillKnow) {
  const std::pair<std::size_t, JournalEntry::Kept> rows[] = {{100, JournalEntry::Kept::frame},
                                                             {10'000, JournalEntry::Kept::all}};
  for (const auto& [bytes, kept] : rows) {
    const DonationJournal bounded(home.path(), std::make_shared<PosixDataProxy>(),
                                  {.bytes = bytes});
    const auto outcome =
        OwnersDonations(agent, bounded, Date(time))
            .donate({{"f", "app", gifts("app", "a", Date(1000))}}, "0123456789abcdef");
    ASSERT_TRUE(outcome.ok()) << outcome.error()->debugDescription();
    EXPECT_EQ(outcome.value().kept, kept) << bytes;
  }
}

TEST_F(OwnersDonationsTest, UnderABundleOfOthersAFileReplacesOnlyWhatItGaveThere) {
  EXPECT_EQ(donate("app", "a b"), "2+0-0");
  EXPECT_EQ(donate("app", "c", Date(1000), "g"), "1+0-0");
  EXPECT_EQ(donate("web", "d"), "1+0-0");
  EXPECT_EQ(donate("app", "b", Date(1000), "g"), "1+0-1") << "b is the other file's from now on";
  EXPECT_EQ(donate("app", "e"), "1+0-1");
  EXPECT_EQ(agent.heldText(), "b@104 d@103 e@105 ");
}

TEST_F(OwnersDonationsTest, UndoLeavesWhatOthersGaveSinceAndSaysWhatDoesNotComeBack) {
  EXPECT_EQ(donate("app", "a b c", Date(150)), "3+0-0");
  EXPECT_EQ(donate("app", "a b d e"), "4+0-1");
  agent.held[0] = gifts("other", "a", Date(1000))[0];
  agent.rejectedIdentifiers = {"b"};
  EXPECT_EQ(undo(), "3+1 left out 1 changed 1");
  EXPECT_EQ(agent.heldText(), "a@102 c@101 ");
  EXPECT_EQ(donate("app", "c"), "1+0-0");
  time = 150;
  EXPECT_EQ(undo(), "1+0 expired 1");
}

TEST_F(OwnersDonationsTest, AFailureLosesNoWayBack) {
  const auto fail = [this](int call, ServiceErrorCode code) {
    agent.failing = call;
    agent.failure = makeServiceError(code, "failed");
  };
  fail(1, ServiceErrorCode::noService);
  EXPECT_EQ(donate("app", "a"), "failed");
  fail(2, ServiceErrorCode::messageTooLarge);
  EXPECT_EQ(donate("app", "a"), "failed") << "refused";
  EXPECT_EQ(undo(), "nothing") << "a refused donation is not noted";
  EXPECT_EQ(donate("app", "a b"), "2+0-0");
  fail(2, ServiceErrorCode::connectionBroken);
  EXPECT_EQ(donate("app", "c"), "failed") << "or perhaps not";
  EXPECT_EQ(undo(), "0+0") << "the note was kept";
  fail(4, ServiceErrorCode::timedOut);
  agent.rejectedIdentifiers = {"d"};
  EXPECT_EQ(donate("app", "c d"), "the values were donated, but what comes then failed: failed");
  EXPECT_EQ(agent.heldText(), "a@104 b@104 c@107 ");
  EXPECT_EQ(journal.entries().value().back().leftOut, std::vector<std::string>{"d"});
  fail(3, ServiceErrorCode::timedOut);
  EXPECT_EQ(undo(), "failed");
  EXPECT_EQ(undo(), "1+0") << "begun again";
  EXPECT_EQ(donate("app", "c"), "1+0-2");
  fail(2, ServiceErrorCode::timedOut);
  EXPECT_EQ(undo(), "failed");
  EXPECT_EQ(undo(), "1+2");
  EXPECT_EQ(agent.heldText(), "a@104 b@104 ");
}

}  // namespace
}  // namespace quenlet
