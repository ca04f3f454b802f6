#include "client/CorvelProxy.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <atomic>
#include <thread>

#include "client/waitForReply.h"
#include "core/CorvelDispatcher.h"
#include "core/DonationListenerDelegate.h"
#include "platform/donations/CorvelInterface.h"
#include "platform/ipc/UnixServiceListener.h"
#include "platform/ipc/WireEncoder.h"
#include "tests/client/RecordingAgent.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

// Exports one object to everybody, under the agent's name.
class Exporter final : public ServiceListenerDelegate {
 public:
  explicit Exporter(std::shared_ptr<ExportedObject> object) : exported(std::move(object)) {}
  bool shouldAcceptNewConnection(ServiceListener&,
                                 const std::shared_ptr<ServiceConnection>& connection) override {
    connection->setExportedInterface(DonationListenerDelegate::makeConfiguredInterface());
    connection->setExportedObject(exported);
    connection->resume();
    return true;
  }

 private:
  const std::shared_ptr<ExportedObject> exported;
};

// Replies with the same bytes to every request.
class FixedReply final : public ExportedObject {
 public:
  explicit FixedReply(std::string values) : bytes(std::move(values)) {}
  void perform(const std::string&, WireReader, WireReply reply) override { reply(bytes); }

 private:
  const std::string bytes;
};

class CorvelProxyTest : public testing::Test {
 protected:
  CorvelProxyTest() { ::setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1); }

  void serve(std::shared_ptr<ExportedObject> object) {
    stopServing();
    exporter = std::make_shared<Exporter>(std::move(object));
    listener = std::make_unique<UnixServiceListener>(CorvelServiceName, nullptr);
    listener->setDelegate(exporter);
    ASSERT_EQ(listener->resume(), nullptr);
  }
  void serveAgent() { serve(std::make_shared<CorvelDispatcher>(agent, [] { return true; })); }
  void stopServing() { listener.reset(); }

  // Calls all ten operations; `replied` is told of each reply by the operation's place in the
  // protocol, and of the error, if any.
  void callAll(const std::function<void(int operation, ErrorPtr error)>& replied) {
    const auto error = [&](int number) {
      return [=](const ErrorPtr& failure) { replied(number, failure); };
    };
    const auto success = [&](int number) {
      return [=](bool done, const ErrorPtr& failure) {
        EXPECT_EQ(done, failure == nullptr);
        replied(number, failure);
      };
    };
    proxy.donateMeCardValues({agent->value}, error(1));
    proxy.removeDonatedMeCardValuesForIdentifiers({"id1", "id2"}, success(2));
    proxy.removeDonatedMeCardValuesWithBundleIdentifier("bundle", success(3));
    proxy.fetchDonatedMeCard([=, this](const ContactPtr& contact, const ErrorPtr& failure) {
      EXPECT_TRUE(failure || *contact == *agent->contact);
      replied(4, failure);
    });
    proxy.synchronousDonatedMeCard([=, this](const Result<ContactPtr>& outcome) {
      EXPECT_TRUE(!outcome.isLeft() || *outcome.left() == *agent->contact);
      replied(5, outcome.isLeft() ? nullptr : outcome.right());
    });
    proxy.meCardDonations([=, this](const auto& values, const ErrorPtr& failure) {
      EXPECT_TRUE(failure || *values->at(0) == *agent->value);
      replied(6, failure);
    });
    proxy.changeFromAccount(nullptr, agent->account, error(7));
    proxy.rejectValueWithDonationIdentifier("id", error(8));
    proxy.rejectValuesWithClusterIdentifier("cluster", error(9));
    proxy.removeAllRejectionsWithCompletionHandler(error(10));
  }

  // The error that each of the ten operations was replied to with.
  std::vector<ErrorPtr> repliesOfAll() {
    std::vector<std::atomic<int>> counts(11);
    std::vector<ErrorPtr> errors(11);
    std::atomic<int> left = 10;
    const auto [all] = waitForReply<bool>([&](const std::function<void(bool)>& allReplied) {
      callAll([&, allReplied](int operation, ErrorPtr error) {
        EXPECT_EQ(++counts[operation], 1) << operation;
        errors[operation] = std::move(error);
        if (--left == 0) allReplied(true);
      });
    });
    EXPECT_TRUE(all);
    errors.erase(errors.begin());
    return errors;
  }

  static ErrorPtr fetchError(CorvelProxy& proxy) {
    return std::get<1>(waitForReply<ContactPtr, ErrorPtr>(
        [&](ContactReply reply) { proxy.fetchDonatedMeCard(std::move(reply)); }));
  }

  TemporaryDirectory runtime;
  const std::shared_ptr<RecordingAgent> agent = std::make_shared<RecordingAgent>();
  std::shared_ptr<Exporter> exporter;
  std::unique_ptr<UnixServiceListener> listener;
  CorvelProxy proxy;
};

TEST_F(CorvelProxyTest, CarriesAllOperationsAndRepliesOnce) {
  serveAgent();
  const std::vector<std::string> calls = {"donate 1",
                                          "removeIdentifiers id1 id2",
                                          "removeBundle bundle",
                                          "fetch",
                                          "synchronous",
                                          "list",
                                          "account - new",
                                          "reject id",
                                          "rejectCluster cluster",
                                          "clear"};
  EXPECT_EQ(repliesOfAll(), std::vector<ErrorPtr>(10));
  EXPECT_EQ(agent->takeCalls(), calls);

  agent->error = makeError("domain", 7, "no");
  for (const ErrorPtr& error : repliesOfAll()) {
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(*error, *agent->error);
  }
}

TEST_F(CorvelProxyTest, SaysThatNoAgentRunsAndFindsOneThatComes) {
  for (const ErrorPtr& error : repliesOfAll()) {
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), ServiceErrorDomain);
    EXPECT_EQ(error->code(), static_cast<int>(ServiceErrorCode::noService));
  }
  serveAgent();
  EXPECT_EQ(fetchError(proxy), nullptr);
}

TEST_F(CorvelProxyTest, RepliesToWhatIsUnderWayWhenTheAgentGoesAndConnectsAnew) {
  serveAgent();
  agent->holdsReplies = true;
  const auto [error] = waitForReply<ErrorPtr>([&](ErrorReply reply) {
    proxy.donateMeCardValues({agent->value}, std::move(reply));
    agent->waitForHeldReply();
    stopServing();
  });
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->code(), static_cast<int>(ServiceErrorCode::connectionBroken));

  agent->holdsReplies = false;
  for (int restart = 0; restart < 2; ++restart) {
    serveAgent();
    EXPECT_EQ(fetchError(proxy), nullptr) << "nothing was under way when the former agent went";
  }
}

TEST_F(CorvelProxyTest, RepliesBeforeItsEndReturns) {
  serveAgent();
  agent->holdsReplies = true;
  ErrorPtr error;
  {
    CorvelProxy ending;
    ending.donateMeCardValues({}, [&](ErrorPtr failure) { error = std::move(failure); });
  }
  ASSERT_NE(error, nullptr);
  EXPECT_EQ(error->code(), static_cast<int>(ServiceErrorCode::connectionBroken));
}

TEST_F(CorvelProxyTest, SynchronousFetchNeedsNoOtherThread) {
  serveAgent();
  std::thread::id repliedOn;
  proxy.synchronousDonatedMeCard(
      [&](const Result<ContactPtr>&) { repliedOn = std::this_thread::get_id(); });
  EXPECT_EQ(repliedOn, std::this_thread::get_id());
}

TEST_F(CorvelProxyTest, TakesNoSenselessReplyForAnAnswer) {
  const auto object = [](const char* className) {
    return std::move(WireEncoder().object(className).integer(1)).take();
  };
  const std::string null = std::move(WireEncoder().null()).take();
  const auto list = [&](const std::string& element) {
    return std::move(WireEncoder().list(1).encoded(element)).take();
  };
  struct Case {
    const char* name;
    std::string reply;
    int operation;
    ServiceErrorCode code = ServiceErrorCode::malformedMessage;
  };
  const Case cases[] = {
      {"no card and no error", null + null, 4},
      {"a card that is none", object("Contact") + null, 4},
      {"an error that is none", object("Error"), 1},
      {"an outcome that is none", object("Either"), 5},
      {"no list and no error", null + null, 6},
      {"a donation that is none", list(object("DonationValue")) + null, 6},
      {"another class", object("Contact"), 1, ServiceErrorCode::invalidArguments},
      {"too few values", null, 4, ServiceErrorCode::invalidArguments},
  };
  for (const Case& each : cases) {
    serve(std::make_shared<FixedReply>(each.reply));
    const ErrorPtr error = repliesOfAll().at(each.operation - 1);
    ASSERT_NE(error, nullptr) << each.name;
    EXPECT_EQ(error->domain(), ServiceErrorDomain) << each.name;
    EXPECT_EQ(error->code(), static_cast<int>(each.code)) << each.name;
  }
}

TEST_F(CorvelProxyTest, ServesManyThreadsWhileTheAgentIsRestarted) {
  serveAgent();
  constexpr int calls = 100;
  std::atomic<int> replies = 0;
  std::atomic<int> threadsLeft = 2;
  auto shared = std::make_unique<CorvelProxy>();
  std::vector<std::thread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([&] {
      for (int n = 0; n < calls; ++n) {
        shared->meCardDonations([&](const auto&, const ErrorPtr&) { ++replies; });
        shared->synchronousDonatedMeCard([&](const Result<ContactPtr>&) { ++replies; });
        static_cast<void>(fetchError(*shared));
      }
      --threadsLeft;
    });
  }
  while (threadsLeft > 0) serveAgent();
  for (std::thread& thread : threads) thread.join();
  shared.reset();
  EXPECT_EQ(replies, 2 * 2 * calls);
}

}  // namespace
}  // namespace quenlet
