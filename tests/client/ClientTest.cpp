#include "quenlet/Client.h"

#include <poll.h>

#include <latch>

#include "client/Conversion.h"
#include "platform/ipc/WireEncoder.h"
#include "platform/notifications/SocketNotificationCenter.h"
#include "tests/client/ServedAgent.h"

namespace quenlet {
namespace {

using Errors = std::vector<std::string>;

class ClientTest : public ServedAgent {
 protected:
  ClientTest() { serveAgent(); }

  static std::string outcomeOf(const ErrorPtr& error) { return described(error); }
  std::string outcomeOf(const Result<Card>& card) {
    if (!card.ok()) return described(card.error());
    return card.value() == Conversion::card(*agent->contact) ? "" : "another card";
  }
  std::string outcomeOf(const Result<std::vector<Donation>>& donations) {
    if (!donations.ok()) return described(donations.error());
    return donations.value() == std::vector{donation} ? "" : "other donations";
  }

  // The outcome of each operation; empty is success.
  Errors waitForAll() {
    return {outcomeOf(client.donate({donation})),
            outcomeOf(client.remove({"id1", "id2"})),
            outcomeOf(client.removeBundle("bundle")),
            outcomeOf(client.card()),
            outcomeOf(client.donations()),
            outcomeOf(client.changeAccount(std::nullopt, account)),
            outcomeOf(client.reject("id")),
            outcomeOf(client.rejectCluster("cluster")),
            outcomeOf(client.removeAllRejections())};
  }
  // Begins each operation; `note` gets its place and outcome.
  void beginAll(Client& client, const std::function<void(std::size_t, std::string)>& note) {
    const auto handler = [&, note](std::size_t place) {
      return [this, note, place](const auto& outcome) { note(place, this->outcomeOf(outcome)); };
    };
    client.donate({donation}, handler(0));
    client.remove({"id1", "id2"}, handler(1));
    client.removeBundle("bundle", handler(2));
    client.card(handler(3));
    client.donations(handler(4));
    client.changeAccount(std::nullopt, account, handler(5));
    client.reject("id", handler(6));
    client.rejectCluster("cluster", handler(7));
    client.removeAllRejections(handler(8));
  }
  Errors handleAll() {
    Errors errors(9);
    std::latch left(9);
    beginAll(client, [&](std::size_t place, std::string outcome) {
      errors[place] = std::move(outcome);
      left.count_down();
    });
    left.wait();
    return errors;
  }

  // Lets the program's loop turn until something holds.
  template <typename Condition>
  static void dispatchUntil(Client& driven, Condition condition) {
    pollfd ready{driven.fd().value(), POLLIN, 0};
    while (!condition()) {
      ASSERT_EQ(::poll(&ready, 1, 10'000), 1) << "nothing comes";
      driven.dispatch();
    }
  }

  const Donation donation = Conversion::donation(*agent->value);
  const AccountRecord account{.identifier = "new"};
  Client client;
};

TEST_F(ClientTest, CarriesAllOperationsWaitingOrWithHandlers) {
  const std::string before = "donate 1;removeIdentifiers id1 id2;removeBundle bundle;";
  const std::string after = ";list;account - new;reject id;rejectCluster cluster;clear;";
  EXPECT_EQ(waitForAll(), Errors(9));
  EXPECT_EQ(agent->takeCalls(), before + "synchronous" + after);
  EXPECT_EQ(handleAll(), Errors(9));
  EXPECT_EQ(agent->takeCalls(), before + "fetch" + after);
  agent->setError(makeError("domain", 7, "no"));

  EXPECT_EQ(waitForAll(), Errors(9, "domain 7"));
  EXPECT_EQ(handleAll(), Errors(9, "domain 7"));
}

TEST_F(ClientTest, AsksNoAgentForWhatIsNotValid) {
  Donation noNumber = donation;
  noNumber.content = Phone{"none", "home"};
  constexpr char invalidArguments[] = "ovaro.quenlet.service-error 4";
  EXPECT_EQ(outcomeOf(client.donate({donation, noNumber})), invalidArguments);
  EXPECT_EQ(outcomeOf(client.changeAccount(account, AccountRecord())), invalidArguments);
  EXPECT_EQ(outcomeOf(client.changeAccount(AccountRecord(), account)), invalidArguments);
  EXPECT_EQ(agent->takeCalls(), "");
}

TEST_F(ClientTest, RunsHandlersWhereTheProgramDispatches) {
  Client driven(Client::standardTimeLimit, Client::Handlers::inDispatch);
  const auto caller = std::this_thread::get_id();
  Errors errors;
  const auto note = [&](std::size_t, std::string outcome) {
    EXPECT_EQ(std::this_thread::get_id(), caller);
    errors.push_back(std::move(outcome));
  };
  beginAll(driven, note);
  driven.donate({Donation{.content = Phone{"none", ""}}},
                [&](const ErrorPtr& error) { note(9, outcomeOf(error)); });
  listener.reset();
  EXPECT_EQ(errors, Errors()) << "before a dispatch";
  dispatchUntil(driven, [&] { return errors.size() == 10; });
  driven.card([&](const Result<Card>& card) { note(0, outcomeOf(card)); });
  EXPECT_EQ(errors.size(), 10);
  dispatchUntil(driven, [&] { return errors.size() == 11; });
  pollfd ready{driven.fd().value(), POLLIN, 0};
  EXPECT_EQ(::poll(&ready, 1, 0), 0) << "nothing is left to do";
  EXPECT_EQ(errors.back(), "ovaro.quenlet.service-error 1");
  EXPECT_EQ(std::count(errors.begin(), errors.end(), "ovaro.quenlet.service-error 4"), 1);
  EXPECT_EQ(outcomeOf(client.fd().ok() ? nullptr : client.fd().error()),
            "ovaro.quenlet.service-error 4")
      << "its handlers have a thread";
}

TEST_F(ClientTest, TakesHandlersBackAndCallsTheRestAtItsEnd) {
  for (const auto place : {Client::Handlers::onOwnThread, Client::Handlers::inDispatch}) {
    agent->holdsReplies = true;
    auto ended = std::make_unique<Client>(Client::standardTimeLimit, place);
    auto owned = std::make_shared<int>();
    std::atomic<int> calls = 0;
    Errors errors;
    const Client::Call taken = ended->card([&calls, owned](const Result<Card>&) { ++calls; });
    ended->card([&](const Result<Card>& card) { errors.push_back(outcomeOf(card)); });
    EXPECT_EQ(owned.use_count(), 2);
    taken.cancel();
    EXPECT_EQ(owned.use_count(), 1) << "what the handler held is gone";
    ended.reset();
    EXPECT_EQ(errors, Errors{"ovaro.quenlet.service-error 2"});
    EXPECT_EQ(calls, 0);
    taken.cancel();
  }
}

TEST_F(ClientTest, FollowsTheCardFromOneAgentToTheNext) {
  EventLoop unused;
  SocketNotificationCenter center(unused, runtime.path() / "quenlet/notifications");
  Client driven(Client::standardTimeLimit, Client::Handlers::inDispatch);
  Errors seen;
  const Client::Call following =
      driven.onCardChange([&](const Result<Card>& card) { seen.push_back(outcomeOf(card)); });
  const auto expectNext = [&](const std::string& outcome) {
    const std::size_t before = seen.size();
    dispatchUntil(driven, [&] { return seen.size() > before; });
    EXPECT_EQ(seen.back(), outcome);
  };
  const auto change = [&](ErrorPtr error) {
    agent->setError(std::move(error));
    center.post(MeCardValuesDidChangeNotification);
  };
  expectNext("");
  center.post(MeCardValuesDidChangeNotification);
  change(makeError("domain", 7, "no"));
  expectNext("domain 7");
  change(nullptr);
  expectNext("");
  listener.reset();
  center.post(MeCardValuesDidChangeNotification);
  expectNext("ovaro.quenlet.service-error 1");
  serveAgent();
  center.post("something else");
  center.post(MeCardValuesDidChangeNotification);
  expectNext("");
  EXPECT_EQ(std::adjacent_find(seen.begin(), seen.end()), seen.end()) << "nothing twice";

  following.cancel();
  EXPECT_EQ(std::distance(
                std::filesystem::directory_iterator(runtime.path() / "quenlet/notifications"), {}),
            0)
      << "its socket is gone";
}

TEST_F(ClientTest, TakesNeitherSuccessNorErrorForAnError) {
  const auto fixed = std::make_shared<FixedReply>();
  fixed->bytes = WireEncoder().boolean(false).null().bytes();
  serve(fixed);
  EXPECT_EQ(outcomeOf(client.remove({"id"})), "ovaro.quenlet.service-error 5");
}

TEST_F(ClientTest, RunsTheProgramOfTheGuide) {
  const auto bin = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  FILE* program = ::popen((bin / "guide-client").c_str(), "r");
  ASSERT_NE(program, nullptr);
  EXPECT_EQ(readFile("/proc/self/fd/" + std::to_string(::fileno(program))), "Ann\n");
  EXPECT_EQ(::pclose(program), 0);
  EXPECT_EQ(agent->takeCalls(), "donate 2;synchronous;");
}

}  // namespace
}  // namespace quenlet
