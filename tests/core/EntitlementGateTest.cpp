#include <latch>

#include "core/CorvelEntitlementDecorator.h"
#include "core/DonationListenerDelegate.h"
#include "platform/ipc/ErrorWire.h"
#include "platform/ipc/UnixServiceListener.h"
#include "protocol/AccountWire.h"
#include "protocol/CorvelInterface.h"
#include "protocol/DonationWire.h"
#include "tests/support/RecordingAgent.h"
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
  std::optional<std::filesystem::path> program = "/opt/other";
  bool isRefused = false;

  pid_t processIdentifier() const override { return 42; }
  std::optional<std::filesystem::path> executable() const override { return program; }
  std::optional<PropertyList> valueForEntitlement(const std::string& name) const override {
    const auto found = entitlements.find(name);
    return found == entitlements.end() ? std::nullopt : std::optional(found->second);
  }
  void setPeerTreatment(PeerTreatment treatment) override {
    isRefused = treatment == PeerTreatment::refused;
  }
  void setExportedInterface(ServiceInterface exported) override { interface = std::move(exported); }
  void setExportedObject(std::shared_ptr<ExportedObject> exported) override {
    object = std::move(exported);
  }
  void resume() override { resumed = true; }
};

class EntitlementGateTest : public EnvironmentTest {
 protected:
  std::set<ErrorPtr> errorsOfAll() {
    std::vector<ErrorPtr> errors;
    agent->callAll(gate, [&](int, const ErrorPtr& error) { errors.push_back(error); });
    EXPECT_EQ(errors.size(), 10u);
    return {errors.begin(), errors.end()};
  }

  const std::shared_ptr<RecordingAgent> agent = std::make_shared<RecordingAgent>();
  const std::shared_ptr<FakeConnection> connection = std::make_shared<FakeConnection>();
  int lookUps = 0;
  CorvelEntitlementDecorator gate{*environment, agent, [this] {
                                    ++lookUps;
                                    return connection;
                                  }};
};

TEST_F(EntitlementGateTest, AnswersEveryOperationOfADeniedClientWithOneError) {
  const std::set<ErrorPtr> errors = errorsOfAll();
  ASSERT_EQ(errors.size(), 1u);
  EXPECT_EQ(**errors.begin(),
            Error(GeneralErrorDomain, 4097,
                  {{DebugDescriptionKey, "connection to corvel: missing entitlement"}}));
  connection->entitlements = {{contacts, true}};
  EXPECT_EQ(errorsOfAll(), errors);
  EXPECT_EQ(agent->takeCalls(), "");
  EXPECT_EQ(lookUps, 1);
  EXPECT_EQ(takeTrace(), (Events{"caller: denyingRequestFromProcess: 42",
                                 "caller: deniedProcess:executable: 42,/opt/other"}));
}

TEST_F(EntitlementGateTest, PassesAllOperationsOfAnEntitledClientThrough) {
  connection->entitlements = {{contacts, true}};
  EXPECT_EQ(errorsOfAll(), std::set<ErrorPtr>{nullptr});
  EXPECT_EQ(agent->takeCalls(), RecordingAgent::allCalls);
  EXPECT_EQ(lookUps, 1);
  EXPECT_EQ(takeTrace(), Events{});
}

TEST_F(EntitlementGateTest, ChecksOnceWhenManyFirstCallsArriveTogether) {
  std::latch start(4);
  CorvelEntitlementDecorator slowGate(*environment, agent, [this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));  // for the others to come
    ++lookUps;
    return connection;
  });
  std::vector<std::jthread> callers(4);
  for (std::jthread& caller : callers) {
    caller = std::jthread([&] {
      start.arrive_and_wait();
      EXPECT_FALSE(slowGate.admitsClient());
    });
  }
  callers.clear();
  EXPECT_EQ(lookUps, 1);
  EXPECT_EQ(takeTrace().size(), 2u) << "one event and its program";
}

TEST_F(EntitlementGateTest, ChecksAnewAfterACheckThatFailedAndDeniesAConnectionThatIsGone) {
  CorvelEntitlementDecorator failingOnce(*environment, agent,
                                         [this]() -> std::shared_ptr<ServiceConnection> {
                                           if (++lookUps == 1) throw std::bad_alloc();
                                           return nullptr;
                                         });
  EXPECT_THROW(static_cast<void>(failingOnce.admitsClient()), std::bad_alloc);
  EXPECT_FALSE(failingOnce.admitsClient());
  EXPECT_EQ(lookUps, 2);
  EXPECT_EQ(takeTrace(), Events{}) << "there is no process to name";
}

TEST_F(EntitlementGateTest, TakesNumbersAloneForAnEntitlement) {
  const std::tuple<const char*, std::map<std::string, PropertyList>, bool> rows[] = {
      {"an integer", {{contacts, 1}}, true},
      {"a real", {{contacts, 0.5}}, true},
      {"suggestions alone", {{suggestions, true}}, true},
      {"the second of both", {{contacts, false}, {suggestions, 2}}, true},
      {"nothing", {}, false},
      {"numbers that are false", {{contacts, 0}, {suggestions, 0.0}}, false},
      {"false alone", {{suggestions, false}}, false},
      {"a text", {{contacts, "true"}}, false},
      {"a list", {{contacts, PropertyListArray{true}}}, false},
      {"another entitlement", {{"ovaro.private", true}}, false},
  };
  connection->program.reset();
  for (const auto& [name, entitlements, passes] : rows) {
    connection->entitlements = entitlements;
    CorvelEntitlementDecorator fresh(*environment, agent, [this] { return connection; });
    EXPECT_EQ(fresh.admitsClient(), passes) << name;
    EXPECT_EQ(takeTrace(), passes ? Events{} : Events{"caller: denyingRequestFromProcess: 42"})
        << name;
  }
}

struct TakenReply final : ReplyTarget {
  std::string bytes;
  void send(std::string encodedValues) override { bytes = std::move(encodedValues); }
  void sendInPieces(EncodedReplyPtr reply) override { bytes = *reply->piece(0); }
  bool isWanted() override { return true; }
};

class DonationListenerDelegateTest : public EntitlementGateTest {
 protected:
  void accept(const std::shared_ptr<FakeConnection>& accepted) {
    UnixServiceListener listener("unused", nullptr);
    EXPECT_TRUE(delegate.shouldAcceptNewConnection(listener, accepted));
    EXPECT_TRUE(accepted->resumed);
  }
  // The code of the reply's error, 0 for none. The interface must let the request through.
  static std::int64_t errorCode(const FakeConnection& client, const std::string& selector,
                                const WireEncoder& arguments) {
    const auto* parameters = client.interface.parameters(selector, OfReply::no);
    EXPECT_EQ(validateWireValues(arguments.bytes(), *parameters), nullptr) << selector;
    const auto taken = std::make_shared<TakenReply>();
    client.object->perform(selector, WireReader(arguments.bytes()), WireReply(taken));
    WireReader reader(taken->bytes);
    std::optional<bool> success;
    if (reader.nextType() == WireType::boolean) success = reader.boolean();
    const ErrorPtr error = ErrorWire::decode(reader);
    EXPECT_EQ(success.value_or(!error), !error) << selector;
    return error ? error->code() : 0;
  }

  std::vector<std::string> limits;
  DonationListenerDelegate delegate{environment, agent, [this](const BundleLimit& limit) {
                                      limits.push_back(limit.allows("app") ? "app" : "none");
                                      return agent;
                                    }};
};

TEST_F(DonationListenerDelegateTest, GatesEachConnectionByItselfAndPassesOnlyValidValues) {
  const auto entitled = std::make_shared<FakeConnection>();
  entitled->entitlements = {{contacts, true}};
  accept(connection);
  accept(entitled);
  EXPECT_TRUE(connection->isRefused && !entitled->isRefused);
  const auto emptyTexts = [](std::size_t count) {
    WireEncoder texts = WireEncoder().list(count);
    while (count-- > 0) texts.string("");
    return texts;
  };
  constexpr auto invalid = static_cast<std::int64_t>(ServiceErrorCode::invalidArguments);
  const std::tuple<const char*, WireEncoder, std::int64_t> requests[] = {
      {CorvelSelector::donate, WireEncoder().list(1).object(DonationWire::className).dictionary(0),
       invalid},
      {CorvelSelector::changeAccount,
       WireEncoder().object(AccountWire::className).dictionary(0).null(), invalid},
      {CorvelSelector::removeIdentifiers, WireEncoder().list(2).string("x").integer(1), invalid},
      {CorvelSelector::removeIdentifiers, emptyTexts(100'000), 0},
      {CorvelSelector::removeIdentifiers, emptyTexts(100'001), invalid},
      {CorvelSelector::removeRejections, {}, 0},
  };
  for (const auto& [selector, arguments, code] : requests) {
    EXPECT_EQ(errorCode(*entitled, selector, arguments), code) << selector;
    EXPECT_EQ(errorCode(*connection, selector, arguments), 4097) << "not looked at: " << selector;
  }
  EXPECT_EQ(agent->takeCalls(), "removeIdentifiers" + std::string(100'000, ' ') + ";clear;");
  EXPECT_EQ(takeTrace(), (Events{"caller: acceptingConnectionFromProcess: 42",
                                 "caller: acceptingConnectionFromProcess: 42",
                                 "caller: denyingRequestFromProcess: 42",
                                 "caller: deniedProcess:executable: 42,/opt/other"}));
}

TEST_F(DonationListenerDelegateTest, LimitsAClientToTheBundlesOfItsEntitlement) {
  for (const PropertyList& bundles :
       {PropertyList(PropertyListArray{"app", "other"}), PropertyList(PropertyListArray{}),
        PropertyList(PropertyListArray{"app", 1}), PropertyList("app"), PropertyList(true)}) {
    connection->entitlements = {{contacts, true}, {"org.quenlet.bundles", bundles}};
    accept(connection);
  }
  EXPECT_EQ(limits, (Events{"app", "none", "none", "none", "none"}));
  connection->entitlements = {{contacts, true}};
  accept(connection);
  EXPECT_EQ(limits.size(), 5u) << "no limit without the entitlement";
}

}  // namespace
}  // namespace quenlet
