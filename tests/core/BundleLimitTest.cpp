#include "core/BundleLimitDecorator.h"
#include "tests/core/AgentFixture.h"

namespace quenlet {
namespace {

using namespace CorvelSelector;

// A client that may change donations under "mine" and, in another spelling, "\u00e9".
class BundleLimitTest : public AgentFixture {
 protected:
  BundleLimitTest() {
    gate = std::make_shared<BundleLimitDecorator>(
        agent, *BundleLimit::ofEntitlement(PropertyListArray{"mine", "e\u0301"}));
  }
};

TEST_F(BundleLimitTest, ChangesOnlyWhatIsUnderItsBundles) {
  const DonationValuePtr a = email("a@x", from("mine", "a"));
  const DonationValuePtr b = email("b@x", from("other", "b"));
  hold({a, b, email("c@x", from("\u00e9", "c"))});
  const DonationValuePtr d = email("d@x", from("mine", "d"));
  const std::string will = "caller: agentWillHandleRequest: ";
  const std::string did = "background: agentDidHandleRequest: ";
  const std::string refused = "error ovaro.quenlet.service-error 12";
  const std::tuple<const char*, std::string, DonationValues, Events> rows[] = {
      {"a donation under another", donate, DonationValues{d, email("e@x", from("other", "e"))},
       Events{"caller: reply " + refused}},
      {"a donation in the place of another bundle's", donate,
       DonationValues{d, email("e@x", from("mine", "b"))},
       Events{will + donate, "caller: acceptingDonations: [d,b]", "background: reply " + refused,
              did + donate}},
      {"a removal of another bundle's", removeIdentifiers, DonationValues{a, b},
       Events{will + removeIdentifiers, "background: reply false " + refused,
              did + removeIdentifiers}},
      {"a removal of another bundle", removeBundle, DonationValues{b},
       Events{"caller: reply false " + refused}},
  };
  for (const auto& [name, request, values, events] : rows) {
    EXPECT_EQ(eventsOf(request, values), events) << name;
    EXPECT_EQ(replyTo(list), "list a b c") << name;
  }
  const DonationValuePtr e = email("e@x", from("e\u0301", "e"));
  eventsOf(donate, {email("d@x", from("mine", "a")), e});
  EXPECT_EQ(replyTo(list), "list a b c e");
  eventsOf(removeIdentifiers, {a, d});
  eventsOf(removeBundle, {e});
  EXPECT_EQ(replyTo(list), "list b");
}

TEST_F(BundleLimitTest, RejectsNothingAndReadsAll) {
  hold({email("b@x", from("other", "b"))});
  gate->rejectValueWithDonationIdentifier("b", errorReply());
  gate->rejectValuesWithClusterIdentifier("c", errorReply());
  gate->removeAllRejectionsWithCompletionHandler(errorReply());
  gate->changeFromAccount(nullptr, nullptr, errorReply());
  EXPECT_EQ(eventsSoFar(), Events(4, "caller: reply error ovaro.quenlet.service-error 12"));
  EXPECT_EQ(replyTo(fetch), "card b@x");
}

TEST_F(BundleLimitTest, KeepsTableAndCardWhenAChangeFails) {
  hold({email("a@x", from("mine", "a"))});
  curated->failures = 1;
  send(donate, {email("b@x", from("mine", "a")), email("c@x", from("mine", "c"))});
  EXPECT_THROW(run(), std::bad_alloc);
  EXPECT_EQ(replyTo(list), "list a");
  EXPECT_EQ(replyTo(fetch), "card a@x");
  curated->failures = 1;
  agent->disableDonations();
  EXPECT_THROW(run(), std::bad_alloc);
  EXPECT_EQ(replyTo(list), "list a");
  eventsOf(donate, {email("d@x", from("mine", "c"))});
  EXPECT_EQ(replyTo(fetch), "card a@x d@x");
}

}  // namespace
}  // namespace quenlet
