#include <gtest/gtest.h>

#include <array>
#include <latch>
#include <thread>

#include "core/CorvelEntitlementDecorator.h"
#include "core/DonationListenerDelegate.h"
#include "platform/donations/AccountWire.h"
#include "platform/donations/ContactWire.h"
#include "platform/donations/CorvelInterface.h"
#include "platform/donations/DonationWire.h"
#include "platform/ipc/ErrorWire.h"
#include "tests/support/TestEnvironment.h"

namespace quenlet {
namespace {

constexpr char contacts[] = "ovaro.private.contacts";
constexpr char suggestions[] = "ovaro.private.suggestions.contacts";

class FakeConnection final : public ServiceConnection {
 public:
  std::map<std::string, PropertyList> entitlements;
  ServiceInterface interface;
  std::shared_ptr<ExportedObject> object;
  bool resumed = false;

  pid_t processIdentifier() const override { return 42; }
  std::optional<PropertyList> valueForEntitlement(const std::string& name) const override {
    const auto found = entitlements.find(name);
    return found == entitlements.end() ? std::nullopt : std::optional(found->second);
  }
  void setExportedInterface(ServiceInterface exported) override { interface = std::move(exported); }
  void setExportedObject(std::shared_ptr<ExportedObject> exported) override {
    object = std::move(exported);
  }
  void resume() override { resumed = true; }
};

// Answers every operation with a result and an error of its own, and counts the calls.
class FakeAgent final : public CorvelProtocol {
 public:
  const ErrorPtr error = makeError("agent", 9);
  const ContactPtr card = std::make_shared<const Contact>();
  int calls = 0;
  std::string received;

  void donateMeCardValues(DonationValues values, ErrorReply reply) override {
    received = identifiersOf(values), answer(reply);
  }
  void removeDonatedMeCardValuesForIdentifiers(std::vector<std::string> identifiers,
                                               SuccessReply reply) override {
    received.clear();
    for (const auto& identifier : identifiers) received += identifier + ";";
    ++calls, reply(true, error);
  }
  void removeDonatedMeCardValuesWithBundleIdentifier(std::string bundle,
                                                     SuccessReply reply) override {
    received = bundle, ++calls, reply(true, error);
  }
  void fetchDonatedMeCard(ContactReply reply) override { ++calls, reply(card, error); }
  void synchronousDonatedMeCard(EitherContactReply reply) override {
    ++calls, reply(Result<ContactPtr>::left(card));
  }
  void meCardDonations(DonationsReply reply) override {
    ++calls, reply(std::make_shared<const DonationValues>(DonationValues{email("a@x")}), error);
  }
  void changeFromAccount(AccountPtr from, AccountPtr to, ErrorReply reply) override {
    received = (from ? from->identifier : "none") + ">" + (to ? to->identifier : "none");
    answer(reply);
  }
  void rejectValueWithDonationIdentifier(std::string identifier, ErrorReply reply) override {
    received = identifier, answer(reply);
  }
  void rejectValuesWithClusterIdentifier(std::string identifier, ErrorReply reply) override {
    received = identifier, answer(reply);
  }
  void removeAllRejectionsWithCompletionHandler(ErrorReply reply) override { answer(reply); }

 private:
  void answer(const ErrorReply& reply) { ++calls, reply(error); }
};

class EntitlementGateTest : public EnvironmentTest {
 protected:
  const std::shared_ptr<FakeAgent> agent = std::make_shared<FakeAgent>();
  const std::shared_ptr<FakeConnection> connection = std::make_shared<FakeConnection>();
  int lookUps = 0;
  CorvelEntitlementDecorator gate{*environment, agent, [this] {
                                    ++lookUps;
                                    return connection;
                                  }};

  // Sends all ten operations; how each was answered, and with which errors.
  std::string answersOfAll(std::set<ErrorPtr>& errors) {
    std::string answers;
    const auto note = [&](const std::string& what, const ErrorPtr& error) {
      answers += what + " ";
      errors.insert(error);
    };
    const ErrorReply plain = [&](const ErrorPtr& error) { note("error", error); };
    const SuccessReply flagged = [&](bool success, const ErrorPtr& error) {
      note(success ? "true" : "false", error);
    };
    gate.donateMeCardValues({}, plain);
    gate.removeDonatedMeCardValuesForIdentifiers({}, flagged);
    gate.removeDonatedMeCardValuesWithBundleIdentifier("", flagged);
    gate.fetchDonatedMeCard([&](const ContactPtr& card, const ErrorPtr& error) {
      note(card ? "card" : "none", error);
    });
    gate.synchronousDonatedMeCard([&](const Result<ContactPtr>& card) {
      if (card.isLeft()) {
        answers += "left ";
      } else {
        note("right", card.right());
      }
    });
    gate.meCardDonations(
        [&](const auto& list, const ErrorPtr& error) { note(list ? "list" : "none", error); });
    gate.changeFromAccount(nullptr, nullptr, plain);
    gate.rejectValueWithDonationIdentifier("", plain);
    gate.rejectValuesWithClusterIdentifier("", plain);
    gate.removeAllRejectionsWithCompletionHandler(plain);
    return answers;
  }
};

TEST_F(EntitlementGateTest, AnswersEveryOperationOfADeniedClientWithOneError) {
  std::set<ErrorPtr> errors;
  EXPECT_EQ(answersOfAll(errors), "error false false none right none error error error error ");
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(**errors.begin(),
            Error(GeneralErrorDomain, 4097,
                  {{DebugDescriptionKey, "connection to corvel: missing entitlement"}}));
  connection->entitlements = {{contacts, true}};
  static_cast<void>(answersOfAll(errors));
  EXPECT_EQ(errors.size(), 1u);
  EXPECT_EQ(agent->calls, 0);
  EXPECT_EQ(lookUps, 1);
  EXPECT_EQ(takeTrace(), Events{"caller: denyingRequestFromProcess: 42"});
}

TEST_F(EntitlementGateTest, ChecksOnceWhenTwoFirstCallsArriveTogether) {
  std::array<ErrorPtr, 2> errors;
  std::latch start(errors.size());
  {
    std::vector<std::jthread> clients;
    for (ErrorPtr& error : errors) {
      clients.emplace_back([&] {
        start.arrive_and_wait();
        gate.donateMeCardValues({}, [&error](const ErrorPtr& denial) { error = denial; });
      });
    }
  }
  EXPECT_TRUE(errors[0]);
  EXPECT_EQ(errors[0], errors[1]);
  EXPECT_EQ(lookUps, 1);
}

TEST_F(EntitlementGateTest, PassesAllOperationsOfAnEntitledClientThrough) {
  connection->entitlements = {{contacts, true}};
  std::set<ErrorPtr> errors;
  EXPECT_EQ(answersOfAll(errors), "error true true card left list error error error error ");
  EXPECT_EQ(errors, std::set<ErrorPtr>{agent->error});
  EXPECT_EQ(agent->calls, 10);
  EXPECT_EQ(lookUps, 1);
  EXPECT_EQ(takeTrace(), Events{});
}

TEST_F(EntitlementGateTest, TakesNumbersAloneForAnEntitlement) {
  const struct {
    std::map<std::string, PropertyList> entitlements;
    bool passes;
  } rows[] = {
      {{{contacts, 1}}, true},
      {{{contacts, 0.5}}, true},
      {{{suggestions, true}}, true},
      {{{contacts, false}, {suggestions, true}}, true},
      {{{contacts, "true"}, {suggestions, 1}}, true},
      {{{contacts, false}}, false},
      {{{contacts, 0}, {suggestions, 0.0}}, false},
      {{{contacts, "true"}}, false},
      {{{contacts, PropertyListArray{true}}}, false},
      {{{"ovaro.private", true}}, false},
  };
  for (const auto& row : rows) {
    connection->entitlements = row.entitlements;
    CorvelEntitlementDecorator fresh(*environment, agent, [this] { return connection; });
    bool passed = false;
    fresh.fetchDonatedMeCard([&](const ContactPtr& card, const ErrorPtr&) { passed = !!card; });
    EXPECT_EQ(passed, row.passes) << &row - rows;
  }
  static_cast<void>(takeTrace());
  CorvelEntitlementDecorator lost(*environment, agent, [] { return nullptr; });
  lost.removeAllRejectionsWithCompletionHandler(
      [](const ErrorPtr& error) { EXPECT_EQ(error->code(), 4097); });
  EXPECT_EQ(takeTrace(), Events{});
}

// The service as a connection sees it.
class DonationListenerDelegateTest : public EntitlementGateTest {
 protected:
  struct Listener final : ServiceListener {
    void setDelegate(std::weak_ptr<ServiceListenerDelegate>) override {}
    ErrorPtr claimName() override { return nullptr; }
    ErrorPtr resume() override { return nullptr; }
  };

  void accept(const std::shared_ptr<FakeConnection>& accepted) {
    Listener listener;
    EXPECT_TRUE(delegate.shouldAcceptNewConnection(listener, accepted));
    EXPECT_TRUE(accepted->resumed);
  }
  // The reply's bytes; the request must be what the interface lets through.
  static std::string call(const FakeConnection& client, const std::string& selector,
                          const WireEncoder& arguments = {}) {
    const auto* parameters = client.interface.parameters(selector, OfReply::no);
    EXPECT_EQ(validateWireValues(arguments.bytes(), *parameters), nullptr) << selector;
    std::string bytes;
    client.object->perform(selector, WireReader(arguments.bytes()),
                           [&](std::string reply) { bytes = std::move(reply); });
    const auto* replies = client.interface.parameters(selector, OfReply::yes);
    EXPECT_EQ(validateWireValues(bytes, *replies), nullptr) << selector;
    return bytes;
  }
  static std::int64_t errorCode(const std::string& reply) {
    WireReader reader(reply);
    return ErrorWire::decode(reader)->code();
  }

  DonationListenerDelegate delegate{environment, agent};
};

TEST_F(DonationListenerDelegateTest, GivesEachConnectionAGateOfItsOwn) {
  const auto entitled = std::make_shared<FakeConnection>();
  entitled->entitlements = {{contacts, true}};
  accept(connection);
  accept(entitled);
  EXPECT_EQ(errorCode(call(*connection, CorvelSelector::removeRejections)), 4097);
  EXPECT_EQ(errorCode(call(*entitled, CorvelSelector::removeRejections)), 9);
  EXPECT_EQ(takeTrace(), (Events{"caller: acceptingConnectionFromProcess: 42",
                                 "caller: acceptingConnectionFromProcess: 42",
                                 "caller: denyingRequestFromProcess: 42"}));
}

TEST_F(DonationListenerDelegateTest, CarriesRequestsAndRepliesOverTheWire) {
  connection->entitlements = {{contacts, true}};
  accept(connection);
  WireEncoder donations;
  DonationWire::encode(donations, {email("a@x", from("app", "a")), image("b", from("app", "b"))});
  EXPECT_EQ(errorCode(call(*connection, CorvelSelector::donate, donations)), 9);
  EXPECT_EQ(agent->received, "a b");
  WireEncoder identifiers;
  identifiers.list(2).string("x").string("y");
  const std::string removal = call(*connection, CorvelSelector::removeIdentifiers, identifiers);
  EXPECT_EQ(WireReader(removal).boolean(), true);
  EXPECT_EQ(agent->received, "x;y;");
  for (const char* selector :
       {CorvelSelector::removeBundle, CorvelSelector::rejectValue, CorvelSelector::rejectCluster}) {
    static_cast<void>(call(*connection, selector, WireEncoder().string(selector)));
    EXPECT_EQ(agent->received, selector);
  }
  WireEncoder accounts;
  AccountWire::encode(accounts, nullptr);
  AccountWire::encode(accounts, std::make_shared<const Account>(Account{.identifier = "new"}));
  static_cast<void>(call(*connection, CorvelSelector::changeAccount, accounts));
  EXPECT_EQ(agent->received, "none>new");
  const std::string fetched = call(*connection, CorvelSelector::fetch);
  WireReader card(fetched);
  EXPECT_EQ(*ContactWire::decode(card), *agent->card);
  const std::string either = call(*connection, CorvelSelector::synchronousFetch);
  WireReader outcome(either);
  EXPECT_EQ(*ContactWire::decodeEither(outcome).left(), *agent->card);
  const std::string listed = call(*connection, CorvelSelector::list);
  WireReader list(listed);
  EXPECT_EQ(identifiersOf(DonationWire::decode(list).left()), "email");
}

TEST_F(DonationListenerDelegateTest, AnswersInvalidValuesWithoutAskingTheAgent) {
  connection->entitlements = {{contacts, true}};
  accept(connection);
  const auto invalid = static_cast<std::int64_t>(ServiceErrorCode::invalidArguments);
  WireEncoder record;
  record.list(1).object(DonationWire::className).dictionary(0);
  EXPECT_EQ(errorCode(call(*connection, CorvelSelector::donate, record)), invalid);
  WireEncoder account;
  account.object(AccountWire::className).dictionary(0).null();
  EXPECT_EQ(errorCode(call(*connection, CorvelSelector::changeAccount, account)), invalid);
  WireEncoder identifiers;
  identifiers.list(2).string("x").integer(1);
  const std::string reply = call(*connection, CorvelSelector::removeIdentifiers, identifiers);
  WireReader reader(reply);
  EXPECT_EQ(reader.boolean(), false);
  EXPECT_EQ(ErrorWire::decode(reader)->code(), invalid);
  EXPECT_EQ(agent->calls, 0);
}

}  // namespace
}  // namespace quenlet
