#include <gmock/gmock.h>

#include "facade/Callers.h"
#include "facade/FacadeError.h"

namespace quenlet {
namespace {

constexpr CallerLimits limits{.running = 2,
                              .outstanding = 4,
                              .outstandingBytes = 100,
                              .allOutstanding = 7,
                              .allOutstandingBytes = 150,
                              .connections = 3,
                              .identity = std::chrono::seconds(5)};

class CallersTest : public testing::Test {
 protected:
  void call(const std::string& sender, const std::string& what, std::size_t bytes = 1) {
    const auto run = [this, what](const CallerIdentity&, const Callers::Ticket& ticket) {
      done.push_back(what);
      tickets[what] = ticket;
    };
    const auto refuse = [this, what](const ErrorPtr& error) {
      refused.push_back(what + " " + facadeErrorName(*error));
    };
    callers->serve(sender, {.run = run, .refuse = refuse, .sizeInBytes = bytes});
  }
  // The bus says that the sender is this app.
  void identify(const std::string& sender, const std::string& app) {
    pending.extract(sender).mapped()(Result<CallerIdentity>::success({.process = 7, .app = app}));
  }
  // It cannot tell of the first connection.
  void tellNothing() {
    const ErrorPtr gone = makePosixError(ESRCH, "tell");
    pending.extract(":1.1").mapped()(Result<CallerIdentity>::failure(gone));
  }
  void finish(const std::string& what) { tickets.erase(what); }

  std::map<std::string, std::function<void(Result<CallerIdentity>)>> pending;
  std::vector<std::string> done;
  std::vector<std::string> refused;
  BusLoop loop;
  IdleEnd idle{loop, 30, [] {}};
  std::map<std::string, Callers::Ticket> tickets;
  std::shared_ptr<Callers> callers = std::make_shared<Callers>(
      [this](const std::string& sender, auto reply) { pending[sender] = std::move(reply); }, idle,
      limits, [this] { return std::chrono::steady_clock::time_point(time); });
  std::chrono::seconds time{100};
};

TEST_F(CallersTest, RunsAFewOfACallersRequestsAtATimeInTheirOrder) {
  for (const char* what : {"a", "b", "c"}) call(":1.1", what);
  EXPECT_TRUE(done.empty());
  identify(":1.1", "org.example.A");
  EXPECT_THAT(done, testing::ElementsAre("a", "b"));
  call(":1.2", "other");
  identify(":1.2", "org.example.B");
  EXPECT_THAT(done, testing::ElementsAre("a", "b", "other"));
  finish("a");
  EXPECT_THAT(done, testing::ElementsAre("a", "b", "other", "c"));
  EXPECT_TRUE(idle.isHeld());
  for (const char* what : {"b", "c", "other"}) finish(what);
  EXPECT_FALSE(idle.isHeld());
}

TEST_F(CallersTest, RefusesWhatIsBeyondTheLimitsOfAnAppWithAllItsConnections) {
  for (const char* what : {"a", "b", "c"}) call(":1.1", what);
  call(":1.2", "d");
  identify(":1.1", "org.example.A");
  identify(":1.2", "org.example.A");
  call(":1.1", "e");
  call(":1.2", "f");
  EXPECT_THAT(refused,
              testing::ElementsAre(std::string("e ") + BusyError, std::string("f ") + BusyError));
  call(":1.3", "g");
  identify(":1.3", "org.example.B");
  EXPECT_THAT(done, testing::ElementsAre("a", "b", "g"));
}

TEST_F(CallersTest, RefusesWhatIsTooMuchForAllOfThem) {
  call(":1.1", "a", 90);
  call(":1.1", "b", 11);
  call(":1.2", "c", 61);
  call(":1.2", "d", 60);
  EXPECT_THAT(refused,
              testing::ElementsAre(std::string("b ") + BusyError, std::string("c ") + BusyError));
  finish("none");
  call(":1.3", "e", 0);
  call(":1.4", "f", 0);
  EXPECT_EQ(refused.back(), std::string("f ") + BusyError) << "a fourth connection";
  identify(":1.1", "org.example.A");
  finish("a");
  call(":1.1", "g", 90);
  EXPECT_EQ(done.back(), "g") << "no longer too much";
}

// As an app can have that waits for the owner's answer.
TEST_F(CallersTest, MakesRoomInPlaceOfConnectionsOfABusyAppThatAskNothing) {
  for (const char* sender : {":1.1", ":1.2", ":1.3"}) {
    call(sender, sender);
    identify(sender, "org.example.A");
    if (sender != std::string(":1.1")) finish(sender);
  }
  EXPECT_TRUE(callers->knows(":1.1"));
  call(":1.4", "other");
  identify(":1.4", "org.example.B");
  EXPECT_THAT(refused, testing::IsEmpty());
  EXPECT_EQ(done.back(), "other");
  EXPECT_TRUE(callers->knows(":1.1")) << "its call is under way";
  EXPECT_FALSE(callers->knows(":1.2"));
}

TEST_F(CallersTest, RefusesACallerThatCannotBeToldAndLooksAgainAfterAWhileWhoCalls) {
  call(":1.1", "unknown");
  tellNothing();
  EXPECT_FALSE(idle.isHeld());
  call(":1.1", "a");
  identify(":1.1", "org.example.A");
  time += limits.identity;
  call(":1.1", "b");
  EXPECT_EQ(done.back(), "b");
  finish("a");
  time += std::chrono::seconds(1);
  call(":1.1", "c");
  EXPECT_EQ(done.back(), "b");
  tellNothing();
  const std::string error = std::string(" ") + NotPermittedError;
  EXPECT_THAT(refused, testing::ElementsAre("unknown" + error, "c" + error));
  EXPECT_TRUE(callers->knows(":1.1")) << "a call of it is under way";
  call(":1.1", "d");
  identify(":1.1", "org.example.A");
  EXPECT_EQ(done.back(), "d");
}

// What is left of it must not count for ever.
TEST_F(CallersTest, ForgetsAConnectionThatEnds) {
  for (int turn = 0; turn < 20; ++turn) {
    const std::string sender = ":1." + std::to_string(turn);
    call(sender, "a", 80);
    call(sender, "b", 20);
    if (turn % 2 == 0) identify(sender, "org.example.A");
    callers->forget(sender);
    tickets.clear();
  }
  EXPECT_TRUE(refused.empty());
  EXPECT_FALSE(idle.isHeld());
}

}  // namespace
}  // namespace quenlet
