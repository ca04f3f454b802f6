#include "facade/Watchers.h"

#include <gmock/gmock.h>

#include "facade/FacadeError.h"
#include "quenlet/ErrorCodes.h"

namespace quenlet {
namespace {

using testing::ElementsAre;

Result<Card> failed(DonationErrorCode code) {
  return Result<Card>::failure(makeError(DonationErrorDomain, static_cast<int>(code), "no"));
}

class WatchersTest : public testing::Test {
 protected:
  void add(const std::string& name, const std::optional<std::string>& app = {}) {
    watchers.add(name, {.app = app}, [this, name](const ErrorPtr& error) {
      trace.push_back(name + (error ? " " + facadeErrorName(*error) : " watches"));
    });
  }
  void change() { card(Result<Card>::success({})); }
  // The look at this one ends.
  void conclude(const std::string& name, const ErrorPtr& error = nullptr) {
    looks.extract(name).mapped()(error);
  }
  std::vector<std::string> traced() { return std::exchange(trace, {}); }

  BusLoop loop;
  IdleEnd idle{loop, 30, [] {}};
  std::vector<std::string> trace;
  Client::CardHandler card;
  std::optional<Result<Card>> atOnce;
  std::map<std::string, Watchers::Outcome> looks;
  bool isLookLate = false;
  bool isBroken = false;
  Watchers watchers{[this](Client::CardHandler handler) {
                      trace.emplace_back("follow");
                      if (isBroken) throw std::bad_alloc();
                      card = std::move(handler);
                      if (atOnce) card(*atOnce);
                      return [this] { trace.emplace_back("stop"); };
                    },
                    idle,
                    [this](const auto& name, const auto&, auto outcome) {
                      if (!isLookLate) return outcome(nullptr);
                      looks.emplace(name, std::move(outcome));
                    },
                    [this](const auto& name) { trace.push_back(name + " told"); }};
};

TEST_F(WatchersTest, AnswersOnceNoChangeCanBeMissed) {
  add(":1.1");
  add(":1.2");
  EXPECT_THAT(traced(), ElementsAre("follow"));
  change();
  add(":1.3");
  EXPECT_THAT(traced(), ElementsAre(":1.1 watches", ":1.2 watches", ":1.3 watches"));
  watchers.remove(":1.2");
  change();
  EXPECT_THAT(traced(), ElementsAre(":1.1 told", ":1.3 told"));
  watchers.remove(":1.1");
  EXPECT_TRUE(idle.isHeld());
  watchers.remove(":1.3");
  EXPECT_FALSE(idle.isHeld());
  add(":1.1");
  EXPECT_THAT(traced(), ElementsAre("stop", "follow"));
}

TEST_F(WatchersTest, GivesTheErrorWhenTheCardCannotBeFollowed) {
  for (const bool isAtOnce : {false, true}) {
    SCOPED_TRACE(isAtOnce);
    const auto failure = failed(DonationErrorCode::notSerializable);
    if (isAtOnce) atOnce = failure;
    add(":1.1");
    if (!isAtOnce) card(failure);
    EXPECT_EQ(trace[isAtOnce ? 1 : 2], std::string(":1.1 ") + NotSerializableError);
    EXPECT_FALSE(idle.isHeld());
    traced();
  }
  isBroken = true;
  for (int turn = 0; turn < 2; ++turn) {
    EXPECT_THROW(add(":1.1"), std::bad_alloc);
    EXPECT_THAT(traced(), ElementsAre("follow", std::string(":1.1 ") + FailedError));
    EXPECT_FALSE(idle.isHeld());
  }
  isBroken = false;
  atOnce = failed(DonationErrorCode::featureNotEnabled);
  add(":1.1");
  EXPECT_THAT(traced(), ElementsAre("follow", ":1.1 watches")) << "donations may come on";
}

TEST_F(WatchersTest, WithholdsAChangeOnlyFromThoseWhoMayNotRead) {
  isLookLate = true;
  add(":1.1");
  change();
  traced();
  const std::pair<const char*, bool> rows[] = {{FailedError, true},
                                               {NoAgentError, true},
                                               {"org.example.Error.Unknown", true},
                                               {NotPermittedError, false}};
  for (const auto& [error, isTold] : rows) {
    change();
    conclude(":1.1", makeFacadeError(error, "no"));
    EXPECT_EQ(traced(), std::vector<std::string>{isTold ? ":1.1 told" : "stop"}) << error;
  }
}

TEST_F(WatchersTest, LooksOnceForEachAppAndOneRoundAfterTheOther) {
  isLookLate = true;
  for (const char* name : {":1.1", ":1.2", ":1.3"}) add(name, "org.example.App");
  add(":1.4");
  change();
  traced();
  change();
  change();
  EXPECT_EQ(looks.size(), 2U);
  watchers.remove(":1.2");
  conclude(":1.1");
  EXPECT_THAT(traced(), ElementsAre(":1.1 told", ":1.3 told")) << "one has left meanwhile";
  EXPECT_FALSE(looks.contains(":1.1")) << "the round is not over";
  static_cast<void>(looks.extract(":1.4"));
  EXPECT_EQ(looks.size(), 2U) << "over without an outcome; the second change is told";
  conclude(":1.1");
  conclude(":1.4");
  EXPECT_THAT(traced(), ElementsAre(":1.1 told", ":1.3 told", ":1.4 told"));
  EXPECT_TRUE(looks.empty());
  change();
  EXPECT_EQ(looks.size(), 2U);
}

TEST_F(WatchersTest, RefusesOneMoreThanAThousandAndTwentyFour) {
  for (int i = 1; i <= 1024; ++i) add(":1." + std::to_string(i));
  EXPECT_THAT(traced(), ElementsAre("follow"));
  const std::string refused = std::string(":2.1 ") + BusyError;
  add(":2.1");
  EXPECT_THAT(traced(), ElementsAre(refused)) << "those that wait count";
  change();
  traced();
  add(":2.1");
  add(":1.5");
  watchers.remove(":1.5");
  add(":2.1");
  EXPECT_THAT(traced(), ElementsAre(refused, ":1.5 watches", ":2.1 watches"));
}

TEST_F(WatchersTest, ForgetsOneThatGoesBeforeItsAnswerAndRefusesAllAfterItsEnd) {
  add(":1.1");
  watchers.remove(":1.1");
  EXPECT_THAT(traced(), ElementsAre("follow", "stop"));
  add(":1.2");
  watchers.end();
  EXPECT_FALSE(idle.isHeld());
  add(":1.3");
  const std::string refused = std::string(" ") + NoAgentError;
  EXPECT_THAT(traced(), ElementsAre("follow", "stop", ":1.2" + refused, ":1.3" + refused));
}

}  // namespace
}  // namespace quenlet
