#include "facade/AppGate.h"

#include <gmock/gmock.h>

#include "bus/BusError.h"
#include "facade/FacadeError.h"
#include "tests/support/FakeBus.h"

namespace quenlet {
namespace {

constexpr char dialogs[] = "org.example.Dialogs";
constexpr char app[] = "org.example.App";
constexpr char notFound[] = "org.freedesktop.portal.Error.NotFound";

class AppGateTest : public testing::Test {
 protected:
  void pass(const std::string& sender = ":1.1") {
    gate.pass({.app = app, .sender = sender, .kinds = {CardKind::name}},
              [this](const auto& permission) {
                outcome = permission.ok() ? "yes" : facadeErrorName(*permission.error());
                if (!permission.ok()) sentence = permission.error()->debugDescription();
              });
  }
  // What the store answers to a look at this entry: these texts for the app, or nothing.
  void find(const std::string& entry, const std::vector<std::string>& texts = {}) {
    const FakeBus::Call look = bus.take("Lookup");
    EXPECT_EQ(look.arguments, (BusValues{"quenlet", entry}));
    if (texts.empty()) return bus.fail(look, notFound);
    bus.answer(look, "a{sas}v", {BusDictionary{{app, makeTexts(texts)}}, 0u});
  }
  // The dialog that the app has the program show.
  FakeBus::Call ask() {
    pass();
    find("me-card");
    find("me-card-closed", stored);
    return bus.take("AccessDialog");
  }
  // Keeps what is to be stored of closed questions.
  void store() {
    const FakeBus::Call set = bus.take("SetPermission");
    EXPECT_EQ(set.arguments[2], BusValue("me-card-closed"));
    stored = *set.arguments[4].texts();
    bus.answer(set, "", {});
  }
  void expectClosed(const FakeBus::Call& dialog) {
    const FakeBus::Call closing = bus.take("Close");
    EXPECT_EQ(closing.destination, dialogs);
    EXPECT_EQ(BusValue(BusObjectPath{closing.path}), dialog.arguments.front());
  }

  BusLoop loop;
  FakeBus bus{loop};
  PermissionStore permissions{*bus.connection};
  OwnerQuestion question{*bus.connection, [] { return std::vector{DialogBackend{dialogs, true}}; }};
  Date now{1767225600};
  std::string gone;
  AppGate gate{permissions, question, [this](const auto& sender) { return sender != gone; },
               [this] { return now; }};
  std::vector<std::string> stored;
  std::string outcome;
  std::string sentence;
};

TEST_F(AppGateTest, SaysWhatToDoWhenThereIsNoPermissionStore) {
  for (const char* error : {"ServiceUnknown", "NameHasNoOwner", "Spawn.ExecFailed"}) {
    SCOPED_TRACE(error);
    pass();
    bus.fail(bus.take("Lookup"), std::string("org.freedesktop.DBus.Error.") + error);
    EXPECT_EQ(outcome, NotPermittedError);
    EXPECT_THAT(sentence, testing::HasSubstr("\"quenlet allow org.example.App\""));
  }
  pass();
  bus.fail(bus.take("Lookup"), "org.freedesktop.DBus.Error.NoMemory");
  EXPECT_EQ(outcome, FailedError);
}

TEST_F(AppGateTest, AsksOnceAndKeepsTheAnswer) {
  const FakeBus::Call dialog = ask();
  EXPECT_EQ(dialog.arguments.front(),
            BusValue(BusObjectPath{"/org/freedesktop/portal/desktop/request/1_7/quenlet1"}));
  pass(":1.2");
  find("me-card");
  bus.answer(dialog, "ua{sv}",
             {0u, BusDictionary{{"choices", BusList{"(ss)", {BusStruct{{"name", "true"}}}}}}});
  bus.answer(bus.take("DeletePermission"), "", {});
  const FakeBus::Call set = bus.take("SetPermission");
  EXPECT_EQ(set.arguments, (BusValues{"quenlet", true, "me-card", app, makeTexts({"name"})}));
  bus.answer(set, "", {});
  EXPECT_EQ(outcome, "yes");
  EXPECT_TRUE(bus.calls.empty());
}

TEST_F(AppGateTest, ClosesTheDialogWhenNobodyWaitsForItAnyMore) {
  const FakeBus::Call first = ask();
  pass(":1.2");
  find("me-card");
  gate.forget(":1.1");
  EXPECT_TRUE(bus.calls.empty()) << "the other one still waits";
  gate.forget(":1.2");
  expectClosed(first);
  store();
  EXPECT_EQ(stored, std::vector<std::string>{"2026-01-01T00:00:00Z"});

  pass();
  find("me-card");
  gate.forget(":1.1");
  find("me-card-closed", stored);
  EXPECT_TRUE(bus.calls.empty()) << "gone before there was a dialog";
  pass();
  gone = ":1.1";
  find("me-card");
  EXPECT_TRUE(bus.calls.empty()) << "gone before it was known that there is no answer";
  gone.clear();

  const FakeBus::Call second = ask();
  bus.fail(second, BusNoReply);
  expectClosed(second);
  store();
  EXPECT_EQ(outcome, CancelledError) << "the time was up";

  const FakeBus::Call third = ask();
  gate.end();
  expectClosed(third);
  EXPECT_EQ(outcome, CancelledError);
  pass();
  find("me-card");
  EXPECT_TRUE(bus.calls.empty()) << "after the end";
}

TEST_F(AppGateTest, AsksThreeTimesADayWhoeverRuns) {
  for (int turn = 0; turn < 3; ++turn) {
    bus.answer(ask(), "ua{sv}", {2u, BusDictionary()});
    store();
    now = now.addingSeconds(3600);
  }
  const auto isAsked = [this] {
    outcome.clear();
    pass();
    find("me-card");
    find("me-card-closed", stored);
    bus.settle();
    return outcome.empty();
  };
  EXPECT_FALSE(isAsked());
  EXPECT_EQ(outcome, CancelledError);
  now = now.addingSeconds(86400 - 3 * 3600 - 1);
  EXPECT_FALSE(isAsked());
  now = now.addingSeconds(1);
  EXPECT_TRUE(isAsked());
}

TEST_F(AppGateTest, CountsWhatTheStoreDoesNotTake) {
  for (int turn = 0; turn < 3; ++turn) {
    bus.answer(ask(), "ua{sv}", {2u, BusDictionary()});
    bus.fail(bus.take("SetPermission"), "org.freedesktop.DBus.Error.NoMemory");
  }
  pass();
  find("me-card");
  find("me-card-closed");
  EXPECT_TRUE(bus.calls.empty());
  EXPECT_EQ(outcome, CancelledError);
}

}  // namespace
}  // namespace quenlet
