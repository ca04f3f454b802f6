#include "tests/core/AgentFixture.h"

namespace quenlet {
namespace {

using Rejection = void (Corvel::*)(std::string, ErrorReply);
constexpr Rejection value = &Corvel::rejectValueWithDonationIdentifier;
constexpr Rejection cluster = &Corvel::rejectValuesWithClusterIdentifier;

class CorvelRejectionsTest : public AgentFixture {
 protected:
  // With the place of a writer block that is submitted right after the rejection.
  Events eventsOfRejecting(Rejection what, const std::string& identifier) {
    ((*agent).*what)(identifier, errorReply());
    agent->lock()->performWriterBlock([this] { environment->trace.note("next"); });
    return eventsSoFar();
  }
  static std::string reported(const std::string& identifiers) {
    return "background: reject " + identifiers + " for ovaro.quenlet.me-card";
  }

  const std::string next = "writer: next";
};

TEST_F(CorvelRejectionsTest, DropAndReportWhatIsEqualOrOfOneCluster) {
  hold({email("a@x", from("app", "1")), email("a@x", from("other", "2", "c")),
        email("A@x", from("app", "3")), email("a@x", from("app", "4"), "work"),
        email("b@x", from("app", "5", "c")), image("bytes", from("app", "image", "c")),
        email("c@x", from("app", "6", "")), image("bytes", from("app", "7", "d"))});
  const std::string willValue = "caller: willRejectDonationIdentifier: ";
  const std::string unknownValue = "background: couldNotRejectUnknownDonationIdentifier: ";
  const std::string didValue = "background: didRejectDonationIdentifier: ";
  const std::string willCluster = "caller: willRejectClusterIdentifier: ";
  const std::string unknownCluster = "background: couldNotRejectUnknownClusterIdentifier: ";
  const std::string didCluster = "background: didRejectClusterIdentifier: ";
  const std::string done = "background: reply no error";
  const std::tuple<Rejection, std::string, Events> rows[] = {
      {value, "x",
       Events{willValue + "x", "writer: couldNotRejectUnknownDonationIdentifier: x", next,
              didValue + "x", done}},
      // An image equals nothing, not even itself.
      {value, "image",
       Events{willValue + "image", next, unknownValue + "image", didValue + "image", done}},
      {cluster, "x", Events{willCluster + "x", next, unknownCluster + "x", didCluster + "x", done}},
      // Needs no look at the store.
      {cluster, "", Events{willCluster, unknownCluster, didCluster, done, next}},
      {value, "2",
       Events{willValue + "2", posted, next, "io: store 3 4 5 image 6 7", reported("1 2"),
              didValue + "2", done}},
      {cluster, "c",
       Events{willCluster + "c", posted, next, "io: store 3 4 6 7", reported("5 image"),
              didCluster + "c", done}},
  };
  for (const auto& [what, identifier, expected] : rows) {
    EXPECT_EQ(eventsOfRejecting(what, identifier), expected) << identifier;
  }
  agent->removeAllRejectionsWithCompletionHandler(errorReply());
  EXPECT_EQ(eventsSoFar(), (Events{"caller: willRemoveAllRejections",
                                   "background: didRemoveAllRejections", done}));
  EXPECT_EQ(replyTo(CorvelSelector::list), "list 3 4 6 7") << "none is taken back";
}

// Each field is short enough to be composed; all of them in one line are not.
TEST_F(CorvelRejectionsTest, FindALongAddressInAnotherComposition) {
  const std::string half(2200, 'x');
  hold({postal({.street = half + "\u00e9", .city = half}, from("app", "1")),
        postal({.street = half + "e\u0301", .city = half}, from("app", "2"))});
  eventsOfRejecting(value, "1");
  EXPECT_EQ(replyTo(CorvelSelector::list), "list ");
}

TEST_F(CorvelRejectionsTest, ReportAfterAFailedSaveAndPutNothingBack) {
  hold({email("a@x", from("app", "1")), email("b@x", from("app", "2", "c")),
        email("c@x", from("app", "3"))});
  setEnabled(false);
  persistence->failure = makeError("disk", 28);
  EXPECT_EQ(eventsOfRejecting(value, "1"),
            (Events{"caller: willRejectDonationIdentifier: 1", posted, next, "io: store 2 3",
                    reported("1"), "background: didRejectDonationIdentifier: 1",
                    "background: reply no error"}));
  environment->feedback->failure = makeError("feedback", 7);
  EXPECT_EQ(
      eventsOfRejecting(cluster, "c"),
      (Events{"caller: willRejectClusterIdentifier: c", posted, next, "io: store 3", reported("2"),
              "background: couldNotRejectClusterIdentifier:error: c,feedback 7",
              "background: reply error feedback 7"}));
  EXPECT_EQ(
      eventsOfRejecting(value, "3"),
      (Events{"caller: willRejectDonationIdentifier: 3", posted, next, "io: store ", reported("3"),
              "background: couldNotRejectDonationIdentifier:error: 3,feedback 7",
              "background: reply error feedback 7"}));
}

}  // namespace
}  // namespace quenlet
