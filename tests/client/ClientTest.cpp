#include "quenlet/Client.h"

#include <stdio.h>

#include <filesystem>
#include <latch>

#include "client/Conversion.h"
#include "platform/ipc/WireEncoder.h"
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
  Errors handleAll() {
    Errors errors(9);
    const auto left = std::make_shared<std::latch>(9);
    const auto handler = [&](std::size_t place) {
      return [&, left, place](const auto& outcome) {
        errors[place] = outcomeOf(outcome);
        left->count_down();
      };
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
    left->wait();
    return errors;
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

TEST_F(ClientTest, TakesNeitherSuccessNorErrorForAnError) {
  const auto fixed = std::make_shared<FixedReply>();
  fixed->bytes = WireEncoder().boolean(false).null().bytes();
  serve(fixed);
  EXPECT_EQ(outcomeOf(client.remove({"id"})), "ovaro.quenlet.service-error 5");
}

TEST_F(ClientTest, RunsTheProgramOfTheGuide) {
  const auto bin = std::filesystem::read_symlink("/proc/self/exe").parent_path();
  std::string said;
  FILE* program = ::popen((bin / "guide-client").c_str(), "r");
  ASSERT_NE(program, nullptr);
  for (int character = 0; (character = ::fgetc(program)) != EOF;) {
    said += static_cast<char>(character);
  }
  EXPECT_EQ(::pclose(program), 0);
  EXPECT_EQ(said, "Ann\n");
  EXPECT_EQ(agent->takeCalls(), "donate 2;synchronous;");
}

}  // namespace
}  // namespace quenlet
