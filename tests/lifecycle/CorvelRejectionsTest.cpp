#include "tests/core/AgentFixture.h"

namespace quenlet {
namespace {

class CorvelRejectionsTest : public AgentFixture {
 protected:
  Events eventsOfRejecting(const std::string& identifier) {
    agent->rejectValueWithDonationIdentifier(identifier, errorReply());
    run();
    return takeTrace();
  }
  Events eventsOfRejectingCluster(const std::string& identifier) {
    agent->rejectValuesWithClusterIdentifier(identifier, errorReply());
    run();
    return takeTrace();
  }
  [[nodiscard]] std::set<std::string>& reported() {
    return environment->feedback->rejectedDonations;
  }
};

const std::string posted = std::string("writer: post ") + MeCardValuesDidChangeNotification;

TEST_F(CorvelRejectionsTest, DropsAndReportsEveryEqualValueOfAnyDonor) {
  hold({email("a@x", from("app", "1")), email("a@x", from("other", "2", "cluster")),
        email("A@x", from("app", "3")), email("a@x", from("app", "4"), "work")});
  const Events expected = {"caller: willRejectDonationIdentifier: 1", posted, "io: store 3 4",
                           "background: didRejectDonationIdentifier: 1",
                           "background: reply no error"};
  EXPECT_EQ(eventsOfRejecting("1"), expected);
  EXPECT_EQ(reported(), (std::set<std::string>{"1", "2"}));
}

TEST_F(CorvelRejectionsTest, DropsAClusterAndLeavesValuesWithoutOne) {
  hold({email("a@x", from("app", "1", "c")), email("b@x", from("app", "2", "c")),
        email("c@x", from("app", "3", "")), email("d@x", from("app", "4"))});
  const Events expected = {"caller: willRejectClusterIdentifier: c", posted, "io: store 3 4",
                           "background: didRejectClusterIdentifier: c",
                           "background: reply no error"};
  EXPECT_EQ(eventsOfRejectingCluster("c"), expected);
  EXPECT_EQ(reported(), (std::set<std::string>{"1", "2"}));
}

TEST_F(CorvelRejectionsTest, TellsOnlyTheLogOfUnknownIdentifiers) {
  hold({image("bytes", from("app", "image", "c"))});
  const Events unknown = {"caller: willRejectDonationIdentifier: x",
                          "writer: couldNotRejectUnknownDonationIdentifier: x",
                          "background: didRejectDonationIdentifier: x",
                          "background: reply no error"};
  EXPECT_EQ(eventsOfRejecting("x"), unknown);
  // An image equals nothing, not even itself.
  const Events ofImage = {"caller: willRejectDonationIdentifier: image",
                          "background: couldNotRejectUnknownDonationIdentifier: image",
                          "background: didRejectDonationIdentifier: image",
                          "background: reply no error"};
  EXPECT_EQ(eventsOfRejecting("image"), ofImage);
  for (const std::string cluster : {"", "x"}) {
    const std::string named = cluster.empty() ? "" : " " + cluster;
    const Events ofCluster = {"caller: willRejectClusterIdentifier:" + named,
                              "background: couldNotRejectUnknownClusterIdentifier:" + named,
                              "background: didRejectClusterIdentifier:" + named,
                              "background: reply no error"};
    EXPECT_EQ(eventsOfRejectingCluster(cluster), ofCluster);
  }
  EXPECT_EQ(replyTo(CorvelSelector::list), "list image");
}

TEST_F(CorvelRejectionsTest, ReportsAfterAFailedSaveAndDoesNotPutValuesBack) {
  hold({email("a@x", from("app", "1"))});
  persistence->failure = makeError("disk", 28);
  environment->feedback->failure = makeError("feedback", 7);
  const Events events = eventsOfRejecting("1");
  EXPECT_EQ(events[events.size() - 2].substr(0, 48),
            "background: couldNotRejectDonationIdentifier:err");
  EXPECT_EQ(events.back(), "background: reply error 7");
  EXPECT_EQ(replyTo(CorvelSelector::list), "list ");
}

TEST_F(CorvelRejectionsTest, RemovesAllRejectionsWithoutChangingAnything) {
  agent->removeAllRejectionsWithCompletionHandler(errorReply());
  run();
  const Events expected = {"caller: willRemoveAllRejections", "background: didRemoveAllRejections",
                           "background: reply no error"};
  EXPECT_EQ(takeTrace(), expected);
}

}  // namespace
}  // namespace quenlet
