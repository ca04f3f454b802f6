#include "core/BundleLimitDecorator.h"
#include "tests/core/AgentFixture.h"

namespace quenlet {
namespace {

class BundleLimitTest : public AgentFixture {
 protected:
  // A client that may change donations under "mine" and, in another spelling, "\u00e9".
  const std::shared_ptr<CorvelProtocol> client = std::make_shared<BundleLimitDecorator>(
      agent, *BundleLimit::ofEntitlement(PropertyListArray{"mine", "e\u0301"}));

  Events eventsOfCall(const std::function<void(CorvelProtocol&)>& call) {
    call(*client);
    run();
    return takeTrace();
  }
};

const std::string refused = "error 12";

TEST_F(BundleLimitTest, ChangesOnlyWhatIsUnderItsBundles) {
  hold({email("a@x", from("mine", "a")), email("b@x", from("other", "b")),
        email("c@x", from("\u00e9", "c"))});
  const std::string will = "caller: agentWillHandleRequest: ";
  const std::string did = "background: agentDidHandleRequest: ";
  const std::string donating = CorvelSelector::donate;
  const std::string removing = CorvelSelector::removeIdentifiers;
  using Call = std::function<void(CorvelProtocol&)>;
  const auto donateAll = [this](DonationValues values) -> Call {
    return [this, values](CorvelProtocol& way) { way.donateMeCardValues(values, errorReply()); };
  };
  const auto remove = [this](std::vector<std::string> identifiers) -> Call {
    return [this, identifiers](CorvelProtocol& way) {
      way.removeDonatedMeCardValuesForIdentifiers(identifiers, successReply());
    };
  };
  const auto removeBundle = [this](const std::string& bundle) -> Call {
    return [this, bundle](CorvelProtocol& way) {
      way.removeDonatedMeCardValuesWithBundleIdentifier(bundle, successReply());
    };
  };
  const Events refusedDonation{will + donating, "caller: acceptingDonations: [d,b]",
                               "background: reply " + refused, did + donating};
  const std::tuple<const char*, Call, Events, const char*> rows[] = {
      {"a donation under another bundle",
       donateAll({email("d@x", from("mine", "d")), email("e@x", from("other", "e"))}),
       {"caller: reply " + refused},
       "a b c"},
      {"a donation in the place of another bundle's",
       donateAll({email("d@x", from("mine", "d")), email("e@x", from("mine", "b"))}),
       refusedDonation, "a b c"},
      {"a removal of another bundle's",
       remove({"a", "b"}),
       {will + removing, "background: reply false " + refused, did + removing},
       "a b c"},
      {"a removal of another bundle",
       removeBundle("other"),
       {"caller: reply false " + refused},
       "a b c"},
  };
  for (const auto& [name, call, events, left] : rows) {
    EXPECT_EQ(eventsOfCall(call), events) << name;
    EXPECT_EQ(replyTo(CorvelSelector::list), "list " + std::string(left)) << name;
  }
  static_cast<void>(eventsOfCall(
      donateAll({email("d@x", from("mine", "a")), email("e@x", from("e\u0301", "e"))})));
  EXPECT_EQ(replyTo(CorvelSelector::list), "list a b c e");
  static_cast<void>(eventsOfCall(remove({"a", "unknown"})));
  static_cast<void>(eventsOfCall(removeBundle("e\u0301")));
  EXPECT_EQ(replyTo(CorvelSelector::list), "list b");
}

TEST_F(BundleLimitTest, RejectsNothingAndReadsAll) {
  hold({email("b@x", from("other", "b"))});
  const auto reject = [this](CorvelProtocol& way) {
    way.rejectValueWithDonationIdentifier("b", errorReply());
    way.rejectValuesWithClusterIdentifier("c", errorReply());
    way.removeAllRejectionsWithCompletionHandler(errorReply());
    way.changeFromAccount(nullptr, nullptr, errorReply());
  };
  EXPECT_EQ(eventsOfCall(reject), Events(4, "caller: reply " + refused));
  const auto fetch = [this](CorvelProtocol& way) {
    way.fetchDonatedMeCard([this](const auto& card, const auto& error) { noteCard(card, error); });
  };
  EXPECT_EQ(eventsOfCall(fetch).at(1), "caller: reply card b@x");
}

TEST_F(BundleLimitTest, KeepsTableAndCardWhenAChangeFails) {
  hold({email("a@x", from("mine", "a"))});
  curated->failsOnce = true;
  send(CorvelSelector::donate, {email("b@x", from("mine", "a")), email("c@x", from("mine", "c"))});
  EXPECT_THROW(run(), std::bad_alloc);
  EXPECT_EQ(replyTo(CorvelSelector::list), "list a");
  EXPECT_EQ(replyTo(CorvelSelector::fetch), "card a@x");
  static_cast<void>(eventsOf(CorvelSelector::donate, {email("d@x", from("mine", "c"))}));
  EXPECT_EQ(replyTo(CorvelSelector::fetch), "card a@x d@x");
}

}  // namespace
}  // namespace quenlet
