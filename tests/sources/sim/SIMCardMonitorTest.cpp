#include "sources/sim/SIMCardMonitor.h"

#include "sources/sim/SIMCardDonationSolicitor.h"
#include "tests/core/AgentFixture.h"
#include "tests/support/RecordingAgent.h"

namespace quenlet {
namespace {

// Tells the handlers what the test says.
class FakePhoneNumberMonitor final : public PhoneNumberMonitor {
 public:
  std::list<InfoChangeHandler> handlers;
  std::optional<SIMCardItems> held;
  ErrorPtr error;

  std::shared_ptr<Cancelable> addInfoChangeHandler(InfoChangeHandler handler) override {
    const auto place = handlers.insert(handlers.end(), std::move(handler));
    return std::make_shared<CancelBlock>([this, place] { handlers.erase(place); });
  }
  void infoWithCompletion(InfoCompletion completion) override { completion(held, error); }
};

class SIMCardMonitorTest : public AgentFixture {
 protected:
  // What is printed when the cards change.
  std::string outputOf(const SIMCardItems& items) {
    testing::internal::CaptureStdout();
    for (const auto& handler : std::list(cards->handlers)) handler(items);
    return testing::internal::GetCapturedStdout();
  }
  std::string outputOfSolicitor() {
    testing::internal::CaptureStdout();
    SIMCardDonationSolicitor(agent).runWithReason(DonationSolicitor::donationsEnabledReason);
    return testing::internal::GetCapturedStdout();
  }

  const std::shared_ptr<FakePhoneNumberMonitor> cards = std::make_shared<FakePhoneNumberMonitor>();
  const SIMCardItem number{"sim1", "+49 170 1234567"};
};

TEST_F(SIMCardMonitorTest, DonatesEachNumberForEverUntilNoneIsLeft) {
  setEnabled(true);
  SIMCardMonitor monitor(agent, cards);
  monitor.start();
  EXPECT_EQ(outputOf({number, {"sim2", "no\nnumber\u0085"}, {"sim3", "112"}}),
            "Could not convert phone number no number \n");
  run();
  ASSERT_EQ(identifiersOf(persistence->kept), "sim1 sim3");
  DonationOrigin origin = from(SIMCardBundleIdentifier, "sim1");
  origin.donationDate = environment->schedulers.now();
  EXPECT_EQ(*persistence->kept[0], *phone(number.value, origin, "device"));
  EXPECT_EQ(outputOf({}), "");
  run();
  EXPECT_EQ(identifiersOf(persistence->kept), "");
}

TEST_F(SIMCardMonitorTest, ListensOnceBetweenStartAndStopAndPrintsFailures) {
  const auto receiver = std::make_shared<RecordingAgent>();
  receiver->error = makeError("domain", 7, "a sentence");
  SIMCardMonitor monitor(receiver, cards);
  monitor.stop();
  monitor.start();
  monitor.start();
  const std::string failed = "Error donating device phone number: domain 7: a sentence\n";
  EXPECT_EQ(outputOf({number, {"sim2", "112"}}), failed + failed);
  EXPECT_EQ(receiver->takeCalls(), "donate 1;donate 1;");
  EXPECT_EQ(outputOf({}), "Could not remove previous SIM donations: domain 7: a sentence\n");
  EXPECT_EQ(receiver->takeCalls(), std::string("removeBundle ") + SIMCardBundleIdentifier + ";");
  monitor.stop();
  monitor.stop();
  EXPECT_TRUE(cards->handlers.empty());
}

TEST_F(SIMCardMonitorTest, SolicitorPrintsWhatTheCardsHoldOnPhonesOnly) {
  PlatformServices services = environment->services();
  services.makePhoneNumberMonitor = [this] { return cards; };
  const PlatformServices::Scope withCards(std::move(services));
  cards->held = SIMCardItems{number, {"sim2", "112"}};
  for (const std::int64_t deviceClass : {-1, 0, 2}) {
    environment->device->deviceClass = deviceClass;
    EXPECT_FALSE(SIMCardMonitor::shouldMonitor());
    EXPECT_EQ(outputOfSolicitor(), "");
  }
  environment->device->deviceClass = 1;
  EXPECT_TRUE(SIMCardMonitor::shouldMonitor());
  EXPECT_EQ(outputOfSolicitor(), "SIM info: [sim1 +49 170 1234567, sim2 112]\nError: nothing\n");
  cards->held.reset();
  cards->error = makeError("domain", 7);
  EXPECT_EQ(outputOfSolicitor(), "SIM info: nothing\nError: domain 7\n");
}

}  // namespace
}  // namespace quenlet
