#include "mecard/ProductionInfoProvider.h"

#include "tests/support/TestEnvironment.h"

namespace quenlet {
namespace {

class ProductionInfoProviderTest : public EnvironmentTest {
 protected:
  const std::shared_ptr<ProductionInfoProvider> provider =
      std::make_shared<ProductionInfoProvider>();

  void start() {
    provider->startMonitoring(environment, [this] { environment->trace.note("changed"); });
  }
  void setCard(const char* given, const char* family, std::vector<std::string> addresses) {
    ContactFields card;
    card.givenName = given;
    card.familyName = family;
    for (auto& address : addresses) {
      card.emailAddresses.push_back(std::make_shared<const LabeledValue<std::string>>(
          LabeledValue<std::string>{"home", std::move(address), {}}));
    }
    environment->contacts->card = std::make_shared<const Contact>(std::move(card));
  }
  // What a notification of a changed card leads to.
  Events notice() {
    environment->center->post(MeCardChangeDistributedNotification);
    Events events = takeTrace();
    events.erase(events.begin());
    return events;
  }
  static Events events(const char* name, const char* addresses, bool changed) {
    Events all = {
        std::string("caller: contactsChangedNotificationFoundName:nameChanged: ") + name,
        std::string("caller: contactsChangedNotificationEmailAddressesChanged: ") + addresses};
    if (changed) all.push_back("caller: changed");
    return all;
  }
};

TEST_F(ProductionInfoProviderTest, CallsTheHandlerOnceForEachChangeOfAFact) {
  setCard("Ann", "Lee", {"B@x", " a@x ", "mailto:b@X"});
  start();
  EXPECT_EQ(takeTrace(), events("true,true", "true", true));
  EXPECT_EQ(provider->curatedName(),
            (PersonNameComponents{.givenName = "Ann", .familyName = "Lee"}));
  EXPECT_EQ(provider->curatedEmailAddresses(), (std::vector<std::string>{"a@x", "b@x"}));
  EXPECT_EQ(environment->contacts->askedFor,
            (std::vector{KeyDescriptor::givenName, KeyDescriptor::familyName,
                         KeyDescriptor::emailAddresses}));

  setCard("Ann", "Lee", {"a@x", "b@x"});
  EXPECT_EQ(notice(), events("true,false", "false", false));
  setCard("ann", "Lee", {"a@x", "b@x"});
  EXPECT_EQ(notice(), events("true,true", "false", true));
  setCard("ann", "Lee", {"a@x"});
  EXPECT_EQ(notice(), events("true,false", "true", true));
  setCard("", "", {"a@x"});
  EXPECT_EQ(notice(), events("true,true", "false", true));
  EXPECT_EQ(provider->curatedName(), PersonNameComponents{});
  environment->contacts->card.reset();
  EXPECT_EQ(notice(), events("false,true", "true", true));
  EXPECT_EQ(provider->curatedName(), std::nullopt);
  EXPECT_EQ(provider->curatedEmailAddresses(), std::vector<std::string>{});
}

TEST_F(ProductionInfoProviderTest, TellsOfAChangeThatIsNoticedWhileItStarts) {
  setCard("Ann", "Lee", {});
  environment->center->notifiesNewObservers = true;
  start();
  Events expected = events("true,true", "false", true);
  for (const auto& event : events("true,false", "false", false)) expected.push_back(event);
  EXPECT_EQ(takeTrace(), expected);
}

TEST_F(ProductionInfoProviderTest, ObservesOnceHoweverOftenItIsStarted) {
  start();
  start();
  static_cast<void>(takeTrace());
  EXPECT_EQ(notice(), events("false,false", "false", false));
}

}  // namespace
}  // namespace quenlet
