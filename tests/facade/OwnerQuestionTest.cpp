#include "facade/OwnerQuestion.h"

#include "facade/FacadeError.h"
#include "tests/support/FakeBus.h"

namespace quenlet {
namespace {

class OwnerQuestionTest : public testing::Test {
 protected:
  void ask() {
    outcome.clear();
    asked = question.ask({.app = "org.example.App"}, [this](const auto& answer) {
      outcome = answer.ok() ? "answered" : facadeErrorName(*answer.error());
      if (answer.ok() && !answer.value()) outcome = "closed";
    });
  }

  BusLoop loop;
  FakeBus bus{loop};
  std::chrono::steady_clock::time_point now;
  OwnerQuestion question{
      *bus.connection,
      [] {
        return std::vector<DialogBackend>{{"org.example.Own", true}, {"org.example.Other"}};
      },
      [this] { return now; }};
  std::shared_ptr<Cancelable> asked;
  std::string outcome;
};

TEST_F(OwnerQuestionTest, StartsThisDesktopsDialogOnlyWhenNoneRuns) {
  bus.absent = {"org.example.Own"};
  ask();
  const FakeBus::Call other = bus.take("AccessDialog");
  EXPECT_EQ(other.destination, "org.example.Other");
  bus.fail(other, BusServiceUnknown);
  EXPECT_EQ(outcome, "");
  const FakeBus::Call start = bus.take("StartServiceByName");
  EXPECT_EQ(start.arguments.front(), BusValue("org.example.Own"));
  bus.fail(start, BusServiceUnknown);
  EXPECT_EQ(outcome, NotPermittedError);
}

TEST_F(OwnerQuestionTest, CountsOnlyATimeThatIsUpAsClosed) {
  constexpr auto patience = OwnerQuestion::patience;
  const std::tuple<const char*, std::chrono::minutes, bool> rows[] = {
      {BusNoReply, patience, true},
      {BusNoReply, patience - std::chrono::minutes(1), false},
      {"org.freedesktop.DBus.Error.Failed", patience, false},
      {"org.freedesktop.DBus.Error.UnknownMethod", std::chrono::minutes(0), false},
  };
  for (const auto& [error, passed, isClosed] : rows) {
    SCOPED_TRACE(error);
    ask();
    const FakeBus::Call dialog = bus.take("AccessDialog");
    now += passed;
    bus.fail(dialog, error);
    EXPECT_EQ(bus.take("Close").destination, "org.example.Own");
    EXPECT_EQ(outcome, isClosed ? "closed" : "");
    if (isClosed) continue;
    bus.answer(bus.take("AccessDialog"), "ua{sv}", {0u, BusDictionary()});
    EXPECT_EQ(outcome, "answered") << "by the other one";
  }
}

TEST_F(OwnerQuestionTest, TriesTheNextAfterAnAnswerOfAnother) {
  ask();
  bus.answer(bus.take("AccessDialog"), "ua{sv}", {2u, BusDictionary()}, ":1.4");
  EXPECT_EQ(bus.take("Close").destination, "org.example.Own");
  EXPECT_EQ(bus.take("AccessDialog").destination, "org.example.Other");
}

}  // namespace
}  // namespace quenlet
