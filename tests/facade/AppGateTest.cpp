#include "facade/AppGate.h"

#include <gmock/gmock.h>

#include <new>

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
  std::chrono::steady_clock::time_point steadyNow;
  OwnerQuestion question{*bus.connection,
                         [this] {
                           if (isBroken) throw std::bad_alloc();
                           return std::vector{DialogBackend{dialogs, true}};
                         },
                         [this] { return steadyNow; }};
  Date now{1767225600};
  std::string gone;
  bool isBroken = false;
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
  const FakeBus::Call set = bus.take("SetPermission");
  EXPECT_EQ(set.arguments, (BusValues{"quenlet", true, "me-card", app, makeTexts({"name"})}));
  bus.answer(set, "", {});
  bus.answer(bus.take("DeletePermission"), "", {});
  EXPECT_EQ(outcome, "yes");
  EXPECT_TRUE(bus.calls.empty());
}

TEST_F(AppGateTest, DoesWhatTheOwnerSaysAlsoWhenItCannotBeStored) {
  const auto box = [](const char* state) {
    return BusDictionary{{"choices", BusList{"(ss)", {BusStruct{{"name", state}}}}}};
  };
  const struct {
    const char* name;
    std::uint32_t response;
    BusDictionary results;
    const char* entry;
    const char* text;
    const char* outcome;
    // At the next call, when it could not be stored.
    const char* next;
  } rows[] = {
      {"a box", 0, box("true"), "me-card", "name", "yes", "asked"},
      {"no boxes", 0, {}, "me-card", "name", "yes", "asked"},
      {"closed", 2, {}, "me-card-closed", "2026-01-01T00:00:00Z", CancelledError, "asked"},
      {"closed otherwise",
       7,
       {},
       "me-card-closed",
       "2026-01-01T00:00:00Z",
       CancelledError,
       "asked"},
      {"no box is checked", 0, box("false"), "me-card", "no", NotPermittedError, NotPermittedError},
      {"a no", 1, {}, "me-card", "no", NotPermittedError, NotPermittedError},
  };
  for (const bool isStored : {true, false}) {
    for (const auto& row : rows) {
      SCOPED_TRACE(row.name + std::string(isStored ? "" : ", not stored"));
      AppGate fresh(
          permissions, question, [](const auto&) { return true; }, [this] { return now; });
      const auto pass = [&] {
        outcome = "asked";
        fresh.pass({.app = app, .sender = ":1.1", .kinds = {CardKind::name}},
                   [this](const auto& permission) {
                     outcome = permission.ok() ? "yes" : facadeErrorName(*permission.error());
                   });
        find("me-card");
      };
      pass();
      find("me-card-closed");
      bus.answer(bus.take("AccessDialog"), "ua{sv}", {row.response, row.results});
      const FakeBus::Call set = bus.take("SetPermission");
      EXPECT_EQ(set.arguments, (BusValues{"quenlet", true, row.entry, app, makeTexts({row.text})}));
      constexpr char failure[] = "org.freedesktop.DBus.Error.NoMemory";
      if (isStored) {
        bus.answer(set, "", {});
        // That it cannot forget when dialogs were closed changes nothing.
        if (row.entry == std::string("me-card")) bus.fail(bus.take("DeletePermission"), failure);
      } else {
        bus.fail(set, failure);
      }
      EXPECT_EQ(outcome, row.outcome);
      pass();
      EXPECT_EQ(outcome, isStored ? "asked" : row.next) << "what was stored is gone";
      if (outcome == "asked") find("me-card-closed");
      fresh.end();
      bus.settle();
      bus.calls.clear();
    }
  }
}

TEST_F(AppGateTest, AnswersAllWhenAStepFails) {
  isBroken = true;
  for (int turn = 0; turn < 2; ++turn) {
    outcome.clear();
    pass();
    find("me-card");
    testing::internal::CaptureStderr();
    find("me-card-closed");
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "quenlet: a block has failed: std::bad_alloc\n");
    EXPECT_EQ(outcome, FailedError);
  }
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
  steadyNow += OwnerQuestion::patience;
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
