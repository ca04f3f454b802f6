#include "client/CorvelProxy.h"

#include <latch>

#include "client/waitForReply.h"
#include "platform/ipc/HandlerLoop.h"
#include "platform/ipc/WireEncoder.h"
#include "tests/client/ServedAgent.h"

namespace quenlet {
namespace {

using Errors = std::vector<std::string>;
constexpr char noService[] = "ovaro.quenlet.service-error 1";
constexpr char connectionBroken[] = "ovaro.quenlet.service-error 2";
constexpr char malformedMessage[] = "ovaro.quenlet.service-error 5";
constexpr char timedOut[] = "ovaro.quenlet.service-error 11";

class CorvelProxyTest : public ServedAgent {
 protected:
  // The error of the reply to each of the ten operations; the synchronous one is on this thread.
  Errors repliesOfAll(CorvelProxy& asked) {
    std::vector<std::atomic<int>> counts(10);
    Errors errors(10);
    const auto left = std::make_shared<std::latch>(10);
    const auto caller = std::this_thread::get_id();
    agent->callAll(asked, [&, left](int operation, ErrorPtr error) {
      EXPECT_EQ(++counts[operation - 1], 1) << operation;
      EXPECT_TRUE(operation != 5 || std::this_thread::get_id() == caller);
      errors[operation - 1] = described(error);
      left->count_down();
    });
    left->wait();
    return errors;
  }

  static ErrorPtr fetchError(CorvelProxy& proxy) {
    return std::get<1>(waitForReply<ContactPtr, ErrorPtr>(
        [&](ContactReply reply) { proxy.fetchDonatedMeCard(std::move(reply)); }));
  }

  HandlerLoop handlers{HandlerLoop::Thread::own};
  CorvelProxy proxy{std::make_shared<AgentConnection>(), handlers.loop()};
};

TEST_F(CorvelProxyTest, RepliesOnceToEachOperationAsSoonAsThereIsAnAgent) {
  CorvelProxy waiting;
  for (CorvelProxy* asked : {&proxy, &waiting}) {
    listener.reset();
    EXPECT_EQ(repliesOfAll(*asked), Errors(10, noService));
    serveAgent();
    EXPECT_EQ(repliesOfAll(*asked), Errors(10));
  }
  EXPECT_EQ(exporter->connections, 2);
}

TEST_F(CorvelProxyTest, WaitsForNoReplyLongerThanItWasMadeTo) {
  serve(std::make_shared<FixedReply>());
  const auto impatient = std::make_shared<AgentConnection>(std::chrono::milliseconds(20));
  for (const auto& loop : {handlers.loop(), std::shared_ptr<ClientLoop>()}) {
    CorvelProxy asking(impatient, loop);
    EXPECT_EQ(repliesOfAll(asking), Errors(10, timedOut));
  }
}

TEST_F(CorvelProxyTest, RepliesToWhatIsUnderWayWhenTheAgentGoesAndConnectsAnew) {
  serveAgent();
  agent->holdsReplies = true;
  const auto [error] = waitForReply<ErrorPtr>([&](ErrorReply reply) {
    proxy.donateMeCardValues({agent->value}, std::move(reply));
    agent->waitForHeldReply();
    listener.reset();
  });
  EXPECT_EQ(described(error), connectionBroken);

  agent->holdsReplies = false;
  for (int restart = 0; restart < 2; ++restart) {
    serveAgent();
    EXPECT_EQ(fetchError(proxy), nullptr);
  }
}

TEST_F(CorvelProxyTest, TakesNoSenselessReplyForAnAnswer) {
  const WireEncoder donation = WireEncoder().list(1).object("DonationValue").integer(1).null();
  const std::tuple<const char*, WireEncoder, int> rows[] = {
      {"no card and no error", WireEncoder().null().null(), 4},
      {"something else for a card", WireEncoder().object("Contact").integer(1).null(), 4},
      {"no list and no error", WireEncoder().null().null(), 6},
      {"something else for a donation", donation, 6},
  };
  for (const auto& [name, reply, operation] : rows) {
    const auto fixed = std::make_shared<FixedReply>();
    fixed->bytes = reply.bytes();
    serve(fixed);
    EXPECT_EQ(repliesOfAll(proxy).at(operation - 1), malformedMessage) << name;
  }
}

TEST_F(CorvelProxyTest, ServesManyThreadsWhileTheAgentIsRestarted) {
  serveAgent();
  constexpr int calls = 100;
  std::atomic<int> replies = 0;
  std::atomic<int> threadsLeft = 2;
  auto connection = std::make_shared<AgentConnection>();
  auto dispatching = std::make_unique<HandlerLoop>(HandlerLoop::Thread::own);
  CorvelProxy shared(connection, dispatching->loop());
  std::vector<std::jthread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&] {
      for (int n = 0; n < calls; ++n) {
        shared.meCardDonations([&](const auto&, const ErrorPtr&) { ++replies; });
        shared.synchronousDonatedMeCard([&](const Result<ContactPtr>&) { ++replies; });
        static_cast<void>(fetchError(shared));
      }
      --threadsLeft;
    });
  }
  while (threadsLeft > 0) serveAgent();
  threads.clear();
  connection->stop();  // replies to what is under way
  dispatching.reset();
  EXPECT_EQ(replies, 2 * 2 * calls);
}

}  // namespace
}  // namespace quenlet
