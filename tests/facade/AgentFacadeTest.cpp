#include "facade/AgentFacade.h"

#include "facade/FacadeObject.h"
#include "tests/support/FakeBus.h"

namespace quenlet {
namespace {

// No agent runs: a call that would reach it is NoAgent.
class AgentFacadeTest : public testing::Test {
 protected:
  AgentFacadeTest() {
    agentWatch = loop.watch(client.fd().value(), [this] { client.dispatch(); });
    const auto serve = [this](const std::shared_ptr<BusRequest>& request) {
      const auto arguments = request->arguments({});
      facade.serve(request, arguments.value(), caller, nullptr);
    };
    object = FacadeObject::put(
                 *bus.connection,
                 {.call = serve, .isDonationsEnabled = [] { return true; }, .message = [] {}})
                 .takeValue();
  }
  ~AgentFacadeTest() override { agentWatch->cancel(); }

  std::string ask(const std::string& member, const std::string& signature, const BusValues& given) {
    return lastWord(bus.ask(FacadePath, FacadeName, member, signature, given));
  }

  static std::string lastWord(const std::string& name) { return name.substr(name.rfind('.') + 1); }

  const TemporaryHome runtime;
  BusLoop loop;
  FakeBus bus{loop};
  Client client{Client::standardTimeLimit, Client::Handlers::inDispatch};
  IdleEnd idle{loop, 30, [] {}};
  PermissionStore permissions{*bus.connection};
  OwnerQuestion question{*bus.connection, [] { return std::vector<DialogBackend>(); }};
  AppGate gate{permissions, question, [](const auto&) { return true; }};
  Watchers watchers{[this](Client::CardHandler handler) {
                      return [following = client.onCardChange(std::move(handler))] {
                        following.cancel();
                      };
                    },
                    idle, [](const auto&, const auto&, const auto&) {}, [](const auto&) {}};
  AgentFacade facade{client, gate, watchers, [](const auto&) { return true; }};
  CallerIdentity caller;
  std::unique_ptr<FacadeObject> object;
  std::shared_ptr<Cancelable> agentWatch;
};

BusDictionary donation(const std::string& bundle) {
  return {{"kind", "emailAddress"},
          {"value", "a@example.org"},
          {"origin", BusDictionary{{"donationIdentifier", "1"}, {"bundleIdentifier", bundle}}}};
}

TEST_F(AgentFacadeTest, GivesAppsTheKindsThatTheOwnerAllows) {
  caller = {.process = 7, .app = "org.example.App"};
  const std::tuple<const char*, BusDictionary, const char*> rows[] = {
      {"usual ones", {}, "NoAgent"},
      {"another one as well", {{"kinds", makeTexts({"name", "phoneNumber"})}}, "NoAgent"},
      {"only others", {{"kinds", makeTexts({"phoneNumber", "imageData"})}}, "NotPermitted"},
      {"unknown ones", {{"kinds", makeTexts({"shoeSize"})}}, "InvalidArgs"},
      {"none", {{"kinds", makeTexts({})}}, "InvalidArgs"},
  };
  for (const auto& [name, options, expected] : rows) {
    std::string outcome = ask("GetCard", "a{sv}", {options});
    if (outcome.empty()) {
      bus.answer(bus.take("Lookup"), "a{sas}v",
                 {BusDictionary{{"org.example.App", makeTexts({"name"})}}, 0u});
      outcome = lastWord(bus.answerOfObject());
    }
    EXPECT_EQ(outcome, expected) << name;
  }
}

TEST_F(AgentFacadeTest, LetsEachCallerDoWhatItMay) {
  constexpr char own[] = "org.example.App";
  const CallerIdentity stranger{.process = 7};
  const CallerIdentity entitled{.process = 7, .isEntitled = true};
  const CallerIdentity limited{
      .process = 7, .isEntitled = true, .bundles = std::vector<std::string>{own}};
  const CallerIdentity app{.process = 7, .app = own, .isEntitled = true};
  const BusDictionary account{{"identifier", "a"}};
  // By the callers in the order below: "-" is NotPermitted, "a" NoAgent; "s" asks the store.
  const std::tuple<const char*, const char*, BusValues, const char*> rows[] = {
      {"Donate", "aa{sv}", {makeDictionaries({donation(own)})}, "-aas"},
      {"Donate", "aa{sv}", {makeDictionaries({donation("org.example.Other")})}, "-a--"},
      {"RemoveDonations", "as", {makeTexts({"1"})}, "-aaa"},
      {"RemoveBundle", "s", {own}, "-aaa"},
      {"RemoveBundle", "s", {"org.example.Other"}, "-a--"},
      {"ListDonations", "", {}, "-aaa"},
      {"GetCard", "a{sv}", {BusDictionary()}, "-aas"},
      {"GetVCard", "a{sv}", {BusDictionary()}, "-aas"},
      {"Watch", "", {}, "-aas"},
      {"ChangeAccount", "a{sv}a{sv}", {BusDictionary(), account}, "-a--"},
      {"RejectDonation", "s", {"1"}, "-a--"},
      {"RejectCluster", "s", {"c"}, "-a--"},
      {"RemoveAllRejections", "", {}, "-a--"},
  };
  for (const auto& [member, signature, arguments, expected] : rows) {
    std::string outcomes;
    for (const CallerIdentity& each : {stranger, entitled, limited, app}) {
      caller = each;
      const std::string name = ask(member, signature, arguments);
      outcomes += name == "NotPermitted" ? '-' : name == "NoAgent" ? 'a' : name.empty() ? 's' : '?';
      if (name.empty()) bus.fail(bus.take("Lookup"), BusServiceUnknown);
    }
    EXPECT_EQ(outcomes, expected) << member;
  }
}

}  // namespace
}  // namespace quenlet
