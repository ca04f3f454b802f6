#include "sources/sim/SIMCardMonitor.h"

#include "tests/core/AgentFixture.h"
#include "tests/support/RecordingAgent.h"

namespace quenlet {
namespace {

class FakePhoneNumberMonitor final : public PhoneNumberMonitor {
 public:
  std::list<InfoChangeHandler> handlers;
  std::optional<SIMCardItems> items;
  ErrorPtr error;

  std::shared_ptr<Cancelable> addInfoChangeHandler(InfoChangeHandler handler) override {
    const auto place = handlers.insert(handlers.end(), std::move(handler));
    return std::make_shared<CancelBlock>([this, place] { handlers.erase(place); });
  }
  void infoWithCompletion(InfoCompletion completion) override { completion(items, error); }
};

class SIMCardMonitorTest : public AgentFixture {
 protected:
  std::string outputOf(const SIMCardItems& items) {
    testing::internal::CaptureStdout();
    for (const auto& handler : std::list(cards->handlers)) handler(items);
    run();
    return testing::internal::GetCapturedStdout();
  }

  const std::shared_ptr<FakePhoneNumberMonitor> cards = std::make_shared<FakePhoneNumberMonitor>();
  const SIMCardItem number{"sim1", "+49 170 1234567"};
};

TEST_F(SIMCardMonitorTest, DonatesEachNumberForEverUntilNoneIsLeft) {
  setEnabled(true);
  SIMCardMonitor monitor(agent, cards);
  monitor.start();
  EXPECT_EQ(outputOf({number, {"sim3", "112"}}), "");
  ASSERT_EQ(identifiersOf(persistence->kept), "sim1 sim3");
  DonationOrigin origin = from(SIMCardBundleIdentifier, "sim1");
  origin.donationDate = environment->schedulers.now();
  EXPECT_EQ(*persistence->kept[0], *phone(number.value, origin, "device"));
  EXPECT_EQ(outputOf({}), "");
  EXPECT_EQ(identifiersOf(persistence->kept), "");
}

TEST_F(SIMCardMonitorTest, ListensOnceBetweenStartAndStopAndPrintsFailures) {
  const auto receiver = std::make_shared<RecordingAgent>();
  receiver->setError(makeError("domain", 7, "two\nlines"));
  SIMCardMonitor monitor(receiver, cards);
  monitor.stop();
  for (int round = 0; round < 2; ++round) {
    monitor.start();
    monitor.start();
    const std::string failure = "Error donating device phone number: domain 7: two lines\n";
    testing::internal::CaptureStderr();
    EXPECT_EQ(outputOf({number, {"sim2", "no\nnumber\u0085"}, {"\x01", "112"}, {"sim3", "112"}}),
              failure + "Could not convert phone number no number \n" + failure);
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "quenlet: donation  : left out, since it cannot be serialised\n");
    EXPECT_EQ(receiver->takeCalls(), "donate 1;donate 1;") << "a request for each";
    EXPECT_EQ(outputOf({}), "Could not remove previous SIM donations: domain 7: two lines\n");
    EXPECT_EQ(receiver->takeCalls(), std::string("removeBundle ") + SIMCardBundleIdentifier + ";");
    monitor.stop();
    monitor.stop();
    EXPECT_TRUE(cards->handlers.empty());
  }
}

TEST_F(SIMCardMonitorTest, PrintsTheCardsOfHandsetsWhenSolicited) {
  PlatformServices services = environment->services();
  services.makePhoneNumberMonitor = [this] { return cards; };
  const PlatformServices::Scope withCards(services);
  SIMCardDonationSolicitor solicitor(agent);
  const auto printed = [&] {
    testing::internal::CaptureStdout();
    solicitor.runWithReason(1);
    return testing::internal::GetCapturedStdout();
  };
  cards->items = SIMCardItems{number, {"sim\n2", ""}};
  EXPECT_EQ(printed(), "") << "of an unknown class";
  for (const int otherClass : {-1, 0, 2}) {
    environment->device->answers[DeviceClassNumberKey] = otherClass;
    EXPECT_EQ(printed(), "") << otherClass;
  }
  environment->device->answers[DeviceClassNumberKey] = 1;
  EXPECT_EQ(printed(), "SIM info: [sim1 +49 170 1234567, sim 2 ]\nError: nothing\n");
  cards->items = std::nullopt;
  cards->error = makeError("domain", 7, "two\nlines");
  EXPECT_EQ(printed(), "SIM info: nothing\nError: domain 7: two lines\n");
}

}  // namespace
}  // namespace quenlet
