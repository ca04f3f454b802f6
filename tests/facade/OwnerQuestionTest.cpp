#include "facade/OwnerQuestion.h"

#include <gmock/gmock.h>

#include "bus/BusError.h"
#include "facade/FacadeError.h"
#include "tests/support/FakeBus.h"

namespace quenlet {
namespace {

TEST(OwnerQuestionTest, StartsThisDesktopsDialogOnlyWhenNoneRuns) {
  BusLoop loop;
  FakeBus bus(loop);
  OwnerQuestion question(*bus.connection, [] {
    return std::vector{DialogBackend{"org.example.Own", true}, DialogBackend{"org.example.Other"}};
  });
  std::string outcome;
  const auto asked = question.ask({.app = "org.example.App"}, [&](const auto& answer) {
    outcome = answer.ok() ? "answered" : facadeErrorName(*answer.error());
  });
  std::vector<std::string> tried;
  for (int turn = 0; turn < 3; ++turn) {
    EXPECT_EQ(outcome, "");
    const FakeBus::Call dialog = bus.take("AccessDialog");
    const bool isStarted = sd_bus_message_get_auto_start(dialog.message.get()) > 0;
    tried.push_back(dialog.destination + (isStarted ? " started" : ""));
    bus.fail(dialog, turn == 0 ? "org.freedesktop.DBus.Error.UnknownMethod" : BusServiceUnknown);
  }
  EXPECT_THAT(tried, testing::ElementsAre("org.example.Own", "org.example.Other",
                                          "org.example.Own started"));
  EXPECT_EQ(outcome, NotPermittedError);
}

}  // namespace
}  // namespace quenlet
