#include "facade/AppGate.h"

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
    outcome.clear();
    // A dialog without boxes asks for no picture.
    gate->pass({.app = app, .sender = sender, .kinds = {CardKind::name, CardKind::imageData}},
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
  // Of an app that has no answer yet.
  void passNew(const std::string& sender = ":1.1") {
    pass(sender);
    find("me-card");
  }
  // The dialog that the app has the program show.
  FakeBus::Call ask() {
    passNew();
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
  std::unique_ptr<AppGate> newGate() {
    return std::make_unique<AppGate>(
        permissions, question, [this](const auto& sender) { return sender != gone; },
        [this] { return now; });
  }
  void restart() {
    gate->end();
    bus.settle();
    bus.calls.clear();
    gate = newGate();
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
  std::unique_ptr<AppGate> gate = newGate();
  std::vector<std::string> stored;
  std::string outcome;
  std::string sentence;
};

TEST_F(AppGateTest, SaysWhatToDoWhenThereIsNoPermissionStore) {
  for (const char* error : {"ServiceUnknown", "NameHasNoOwner", "Spawn.ExecFailed"}) {
    pass();
    bus.fail(bus.take("Lookup"), std::string("org.freedesktop.DBus.Error.") + error);
    EXPECT_EQ(outcome, NotPermittedError) << error;
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
  const BusValue boxes = *findEntry(*dialog.arguments.back().dictionary(), "choices");
  EXPECT_EQ(boxes.elements()->at(1).members()->back(), BusValue("false")) << "e-mail addresses";
  passNew(":1.2");
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
  constexpr char closed[] = "2026-01-01T00:00:00Z";
  constexpr char failure[] = "org.freedesktop.DBus.Error.NoMemory";
  // The answer, what is stored, the outcome, and that of the next call if it could not be stored.
  const std::tuple<const char*, std::uint32_t, BusDictionary, std::string, const char*, const char*,
                   const char*>
      rows[] = {
          {"a box", 0, box("true"), "me-card", "name", "yes", ""},
          {"no boxes", 0, BusDictionary(), "me-card", "name", "yes", ""},
          {"closed", 7, BusDictionary(), "me-card-closed", closed, CancelledError, ""},
          {"unchecked", 0, box("false"), "me-card", "no", NotPermittedError, NotPermittedError},
          {"a no", 1, BusDictionary(), "me-card", "no", NotPermittedError, NotPermittedError},
      };
  for (const bool isStored : {true, false}) {
    for (const auto& [name, response, results, entry, text, expected, next] : rows) {
      SCOPED_TRACE(name + std::string(isStored ? "" : ", not stored"));
      bus.answer(ask(), "ua{sv}", {response, results});
      const FakeBus::Call set = bus.take("SetPermission");
      EXPECT_EQ(set.arguments, (BusValues{"quenlet", true, entry, app, makeTexts({text})}));
      if (isStored) {
        bus.answer(set, "", {});
        // That it cannot forget when dialogs were closed changes nothing.
        if (entry == "me-card") bus.fail(bus.take("DeletePermission"), failure);
      } else {
        bus.fail(set, failure);
      }
      EXPECT_EQ(outcome, expected);
      passNew();
      EXPECT_EQ(outcome, isStored ? "" : next) << "what was stored is gone";
      if (outcome.empty()) find("me-card-closed");
      restart();
    }
  }
}

TEST_F(AppGateTest, AnswersAllWhenAStepFails) {
  isBroken = true;
  testing::internal::CaptureStderr();
  for (int turn = 0; turn < 2; ++turn) {
    passNew();
    find("me-card-closed");
    EXPECT_EQ(outcome, FailedError);
  }
  const std::string line = "quenlet: a block has failed: std::bad_alloc\n";
  EXPECT_EQ(testing::internal::GetCapturedStderr(), line + line);
}

TEST_F(AppGateTest, ClosesTheDialogWhenNobodyWaitsForItAnyMore) {
  const FakeBus::Call first = ask();
  passNew(":1.2");
  gate->forget(":1.1");
  EXPECT_TRUE(bus.calls.empty()) << "the other one still waits";
  gate->forget(":1.2");
  expectClosed(first);
  store();
  EXPECT_EQ(stored, std::vector<std::string>{"2026-01-01T00:00:00Z"});

  passNew();
  gate->forget(":1.1");
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
  gate->end();
  expectClosed(third);
  EXPECT_EQ(outcome, CancelledError);
  passNew();
  EXPECT_TRUE(bus.calls.empty()) << "after the end";
}

TEST_F(AppGateTest, AsksThreeTimesADayWhoeverRunsAlsoWhenThatCannotBeStored) {
  const auto isAsked = [this] {
    passNew();
    find("me-card-closed", stored);
    bus.settle();
    return outcome.empty();
  };
  for (int turn = 0; turn < 3; ++turn) {
    bus.answer(ask(), "ua{sv}", {2u, BusDictionary()});
    bus.fail(bus.take("SetPermission"), "org.freedesktop.DBus.Error.NoMemory");
  }
  EXPECT_FALSE(isAsked());
  restart();
  for (int turn = 0; turn < 3; ++turn) {
    bus.answer(ask(), "ua{sv}", {2u, BusDictionary()});
    store();
    now = now.addingSeconds(3600);
  }
  EXPECT_FALSE(isAsked());
  EXPECT_EQ(outcome, CancelledError);
  now = now.addingSeconds(86400 - 3 * 3600 - 1);
  EXPECT_FALSE(isAsked());
  now = now.addingSeconds(1);
  EXPECT_TRUE(isAsked());
}

}  // namespace
}  // namespace quenlet
