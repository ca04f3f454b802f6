#include "facade/Watchers.h"

#include <gmock/gmock.h>

#include "facade/FacadeError.h"
#include "quenlet/ErrorCodes.h"

namespace quenlet {
namespace {

using testing::ElementsAre;

Result<Card> failed(DonationErrorCode code) {
  return Result<Card>::failure(
      makeError(DonationErrorDomain, static_cast<std::int64_t>(code), "no"));
}

class WatchersTest : public testing::Test {
 protected:
  void add(const std::string& name) {
    watchers.add(name, {}, [this, name](const ErrorPtr& error) {
      trace.push_back(name + (error ? " " + facadeErrorName(*error) : " watches"));
    });
  }
  std::vector<std::string> traced() { return std::exchange(trace, {}); }

  BusLoop loop;
  IdleEnd idle{loop, 30, [] {}};
  std::vector<std::string> trace;
  Client::CardHandler card;
  std::optional<Result<Card>> atOnce;
  Watchers watchers{[this](Client::CardHandler handler) {
                      trace.emplace_back("follow");
                      if (atOnce) {
                        handler(*atOnce);
                      } else {
                        card = std::move(handler);
                      }
                      return [this] { trace.emplace_back("stop"); };
                    },
                    idle,
                    [this](const auto& name, const auto&) { trace.push_back(name + " told"); }};
};

TEST_F(WatchersTest, AnswersOnceNoChangeCanBeMissed) {
  add(":1.1");
  add(":1.2");
  EXPECT_THAT(traced(), ElementsAre("follow"));
  card(Result<Card>::success({}));
  add(":1.3");
  EXPECT_THAT(traced(), ElementsAre(":1.1 watches", ":1.2 watches", ":1.3 watches"));
  watchers.remove(":1.2");
  card(Result<Card>::success({}));
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
  atOnce = failed(DonationErrorCode::featureNotEnabled);
  add(":1.1");
  EXPECT_THAT(traced(), ElementsAre("follow", ":1.1 watches")) << "donations may come on";
}

TEST_F(WatchersTest, RefusesAllAfterItsEnd) {
  add(":1.1");
  card(Result<Card>::success({}));
  watchers.end();
  EXPECT_FALSE(idle.isHeld());
  add(":1.2");
  EXPECT_THAT(traced(),
              ElementsAre("follow", ":1.1 watches", "stop", std::string(":1.2 ") + NoAgentError));
}

TEST_F(WatchersTest, ForgetsOneThatGoesBeforeItsAnswer) {
  add(":1.1");
  watchers.remove(":1.1");
  EXPECT_THAT(traced(), ElementsAre("follow", "stop"));
  add(":1.2");
  watchers.end();
  EXPECT_THAT(traced(), ElementsAre("follow", "stop", std::string(":1.2 ") + NoAgentError));
}

}  // namespace
}  // namespace quenlet
