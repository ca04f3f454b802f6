#include "sources/sim/SIMCardMonitor.h"

#include "tests/core/AgentFixture.h"
#include "tests/support/RecordingAgent.h"

namespace quenlet {
namespace {

class FakePhoneNumberMonitor final : public PhoneNumberMonitor {
 public:
  std::list<InfoChangeHandler> handlers;

  std::shared_ptr<Cancelable> addInfoChangeHandler(InfoChangeHandler handler) override {
    const auto place = handlers.insert(handlers.end(), std::move(handler));
    return std::make_shared<CancelBlock>([this, place] { handlers.erase(place); });
  }
  void infoWithCompletion(InfoCompletion completion) override { completion(std::nullopt, nullptr); }
};

class SIMCardMonitorTest : public AgentFixture {
 protected:
  std::string outputOf(const SIMCardItems& items) {
    testing::internal::CaptureStdout();
    for (const auto& handler : std::list(cards->handlers)) handler(items);
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

  EXPECT_EQ(outputOf({number}), "Error donating device phone number: domain 7: a sentence\n");
  EXPECT_EQ(receiver->takeCalls(), "donate 1;");
  EXPECT_EQ(outputOf({}), "Could not remove previous SIM donations: domain 7: a sentence\n");
  EXPECT_EQ(receiver->takeCalls(), std::string("removeBundle ") + SIMCardBundleIdentifier + ";");
  monitor.stop();
  monitor.stop();
  EXPECT_TRUE(cards->handlers.empty());
}

}  // namespace
}  // namespace quenlet
