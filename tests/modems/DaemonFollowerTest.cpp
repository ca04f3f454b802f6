#include "modems/DaemonFollower.h"

#include "modems/OfonoDaemon.h"
#include "tests/support/FakeBus.h"

namespace quenlet {
namespace {

using testing::ElementsAre;

// Follows a daemon with one modem, or two.
class DaemonFollowerTest : public testing::Test {
 protected:
  void answerList(int count = 1) {
    const BusDictionary properties{{"Interfaces", makeTexts({"org.ofono.SimManager"})}};
    BusList modems{"(oa{sv})", {}};
    for (int number = 0; number < count; ++number) {
      modems.elements.emplace_back(
          BusStruct{{BusObjectPath{"/m" + std::to_string(number)}, properties}});
    }
    bus.answer(bus.take("GetModems"), "a(oa{sv})", {modems});
  }
  void answerCard(const char* number) {
    bus.answer(bus.take("GetProperties"), "a{sv}",
               {BusDictionary{{"Present", true},
                              {"CardIdentifier", "8949"},
                              {"SubscriberNumbers", makeTexts({number})}}});
  }
  void changeOwner(const char* owner) {
    bus.signal("org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged", "sss",
               {"org.ofono", "", owner});
  }
  void change(const char* property) {
    bus.signal(":1.3", "org.ofono.SimManager", "PropertyChanged", "sv", {property, true});
  }

  BusLoop loop;
  FakeBus bus{loop};
  std::vector<std::string> told;
  std::vector<double> delays;
  Block retry;
  DaemonFollower follower{[this](double delaySeconds, Block block) {
                            delays.push_back(delaySeconds);
                            retry = std::move(block);
                            return std::make_shared<CancelBlock>([] {});
                          },
                          *bus.connection, std::make_unique<OfonoDaemon>(),
                          [this](const std::vector<Modem>& modems) {
                            std::string text;
                            for (const Modem& modem : modems) {
                              const auto& numbers = modem.card.numbers;
                              text += modem.place + "=" + (numbers.empty() ? "?" : numbers[0]);
                              text += modem.state == CardState::readable ? ";" : "-;";
                            }
                            told.push_back(text);
                          }};
};

TEST_F(DaemonFollowerTest, ReadsWhenTheDaemonComesAndHasNews) {
  bus.fail(bus.take("GetModems"), BusNameHasNoOwner, "org.freedesktop.DBus");
  EXPECT_THAT(told, ElementsAre(""));
  changeOwner(":1.3");
  answerList();
  EXPECT_EQ(told.size(), 1U) << "the card is not known yet";
  change("Present");
  answerCard("111");
  EXPECT_EQ(told.back(), "/m0=111;");
  answerList();
  answerCard("222");
  EXPECT_EQ(told.back(), "/m0=222;") << "there was news during the reading";
  change("Strength");
  EXPECT_TRUE(bus.calls.empty());
  change("Present");
  answerList(0);
  EXPECT_EQ(told.back(), "");
}

TEST_F(DaemonFollowerTest, TellsOfNothingThatADaemonSaidThatHasGone) {
  answerList();
  const FakeBus::Call card = bus.take("GetProperties");
  changeOwner("");
  EXPECT_THAT(told, ElementsAre(""));
  bus.answer(card, "a{sv}", {BusDictionary{{"Present", true}}});
  EXPECT_EQ(told.size(), 1U);
  changeOwner(":1.3");
  answerList();
  answerCard("111");
  EXPECT_THAT(told, ElementsAre("", "/m0=111;"));
}

TEST_F(DaemonFollowerTest, ReportsACardThatItCannotReadAndAsksForItLessAndLessOften) {
  testing::internal::CaptureStderr();
  answerList(2);
  for (int turn = 0; turn < 6; ++turn) {
    bus.fail(bus.take("GetProperties"), "org.ofono.Error.InProgress");
    answerCard("111");
    EXPECT_EQ(told.back(), "/m0=?-;/m1=111;");
    EXPECT_TRUE(bus.calls.empty()) << "not at once";
    retry();
    answerList(2);
  }
  EXPECT_THAT(delays, ElementsAre(30, 60, 120, 240, 480, 480));
  answerCard("222");
  answerCard("111");
  EXPECT_EQ(told.back(), "/m0=222;/m1=111;");
  EXPECT_EQ(delays.size(), 6U);
  change("Present");
  bus.fail(bus.take("GetModems"), "org.ofono.Error.Failed");
  EXPECT_EQ(delays.back(), 30) << "it was well in between";
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "quenlet: org.ofono: cannot read a card: org.ofono.Error.InProgress\n"
            "quenlet: org.ofono: cannot read the modems: org.ofono.Error.Failed\n");
}

TEST_F(DaemonFollowerTest, ReportsAListThatItCannotReadWithoutItsSentence) {
  testing::internal::CaptureStderr();
  bus.fail(bus.take("GetModems"), "org.ofono.Error.Failed");
  EXPECT_TRUE(told.empty()) << "nothing is known";
  changeOwner(":1.3");
  bus.answer(bus.take("GetModems"), "s", {"nonsense"});
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "quenlet: org.ofono: cannot read the modems: org.ofono.Error.Failed\n"
            "quenlet: org.ofono: cannot read the modems\n");
  EXPECT_TRUE(told.empty());
  changeOwner(":1.3");
  answerList(0);
  EXPECT_THAT(told, ElementsAre(""));
}

}  // namespace
}  // namespace quenlet
