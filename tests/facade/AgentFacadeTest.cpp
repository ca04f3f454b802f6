#include "facade/AgentFacade.h"

#include "facade/FacadeObject.h"
#include "tests/client/ServedAgent.h"
#include "tests/support/FakeBus.h"

namespace quenlet {
namespace {

// While no agent is served, a call that would reach it is NoAgent.
class AgentFacadeTest : public ServedAgent {
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
  // What that answers once the permission store has said `words` of an app.
  std::string afterLookup(const std::string& app, const BusValue& words) {
    bus.answer(bus.take("Lookup"), "a{sas}v", {BusDictionary{{app, words}}, 0u});
    return lastWord(bus.answerOfObject());
  }
  static std::string lastWord(const std::string& name) { return name.substr(name.rfind('.') + 1); }

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

BusDictionary donation(const std::string& bundle, const std::string& identifier = "1") {
  return {
      {"kind", "emailAddress"},
      {"value", "a@example.org"},
      {"origin", BusDictionary{{"donationIdentifier", identifier}, {"bundleIdentifier", bundle}}}};
}

// How many donations there are, or the given name and how many addresses.
std::string shown(const BusValues& results) {
  if (results.empty()) return "";
  if (const BusValues* list = results[0].elements()) return " " + std::to_string(list->size());
  const BusDictionary& card = *results[0].dictionary();
  return " " + *findText(*findDictionary(card, "name"), "givenName") + " " +
         std::to_string(findEntry(card, "emailAddresses")->elements()->size());
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
      outcome = afterLookup("org.example.App", makeTexts({"name"}));
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

TEST_F(AgentFacadeTest, HasTheAgentDoWhatWasAskedAndTellsAnAppOnlyOfWhatItMaySee) {
  serveAgent();
  // The agent holds "id" of "bundle".
  const CallerIdentity host{.process = 7, .isEntitled = true};
  const CallerIdentity limited{
      .process = 7, .isEntitled = true, .bundles = std::vector<std::string>{"own"}};
  const CallerIdentity app{.process = 7, .app = "bundle"};
  const auto of = [](const char* bundle, const char* identifier) {
    return makeDictionaries({donation(bundle, identifier)});
  };
  const auto account = [](const char* identifier) {
    return BusDictionary{{"identifier", identifier}};
  };
  // What the store says of the app is the kind "name", and for donations a yes.
  using Row =
      std::tuple<CallerIdentity, const char*, const char*, BusValues, const char*, const char*>;
  const Row rows[] = {
      {host, "Donate", "aa{sv}", {of("own", "id")}, "ok", "donate 1;"},
      {limited, "Donate", "aa{sv}", {of("own", "new")}, "ok", "list;donate 1;"},
      {limited, "Donate", "aa{sv}", {of("own", "id")}, "NotPermitted", "list;"},
      {app, "Donate", "aa{sv}", {of("", "id")}, "ok", "list;donate 1;"},
      {limited, "RemoveDonations", "as", {makeTexts({"1", "id"})}, "NotPermitted", "list;"},
      {app, "RemoveDonations", "as", {makeTexts({"1"})}, "ok", "list;removeIdentifiers bundle:1;"},
      {app, "RemoveBundle", "s", {"bundle"}, "ok", "removeBundle bundle;"},
      {host, "ListDonations", "", {}, "ok 1", "list;"},
      {app, "ListDonations", "", {}, "ok 0", "list;"},
      {host, "GetCard", "a{sv}", {BusDictionary()}, "ok Ann 1", "fetch;"},
      {app, "GetCard", "a{sv}", {BusDictionary()}, "ok Ann 0", "fetch;"},
      {host, "ChangeAccount", "a{sv}a{sv}", {account("a"), account("b")}, "ok", "account a b;"},
      {host, "RejectCluster", "s", {"c"}, "ok", "rejectCluster c;"},
  };
  for (const auto& [by, member, signature, arguments, expected, calls] : rows) {
    SCOPED_TRACE(member);
    caller = by;
    std::string outcome = ask(member, signature, arguments);
    if (outcome.empty()) {
      outcome =
          afterLookup("bundle", makeTexts({member == std::string("Donate") ? "yes" : "name"}));
    }
    EXPECT_EQ(outcome + (outcome == "ok" ? shown(bus.results) : ""), expected);
    EXPECT_EQ(agent->takeCalls(), calls);
  }
}

}  // namespace
}  // namespace quenlet
