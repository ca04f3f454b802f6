#include "tests/core/AgentFixture.h"

namespace quenlet {
namespace {

class CorvelDiscoveryTest : public AgentFixture {
 protected:
  CorvelDiscoveryTest() {
    environment->accounts->held.push_back(std::make_shared<const Account>(
        Account{.identifier = "A1", .username = "a@x.org", .enabledDataclasses = {"mail"}}));
  }
  // Also prints, which is left in `printed`.
  Events eventsOfDiscovery() {
    testing::internal::CaptureStdout();
    agent->discoverAllExtensions();
    run();
    printed = testing::internal::GetCapturedStdout();
    return takeTrace();
  }
  Events eventsOfEnabling() {
    setEnabled(false);
    return setEnabled(true);
  }

  std::string printed;
};

TEST_F(CorvelDiscoveryTest, AsksExtensionsThenAccountsThenSIMCardsWhenDonationsComeOnAgain) {
  environment->donors.install("app1");
  environment->donors.installed["app2"] = std::make_shared<FakeDonorObject>();
  environment->donors.install("app3");
  PlatformServices services = environment->services();
  services.deviceInfo = [this] {
    environment->trace.note("look for SIM cards");
    return environment->device;
  };
  const PlatformServices::Scope noting(services);
  EXPECT_EQ(
      eventsOfEnabling(),
      (Events{"writer: featureWillEnable", "writer: willDiscoverExtensions",
              "writer: didDiscoverUnexpectedExtensionType: object", "writer: didDiscoverExtensions",
              "writer: redonate app1 1", "writer: redonate app3 1", "writer: donating: email:A1",
              "writer: agentWillHandleRequest: donateMeCardValues:completionHandler:",
              "writer: acceptingDonations: [email:A1]", "writer: willSaveExtensionVersions",
              "writer: look for SIM cards", "writer: featureDidEnable", posted,
              "io: store email:A1",
              "background: agentDidHandleRequest: donateMeCardValues:completionHandler:"}));
}

TEST_F(CorvelDiscoveryTest, SolicitsAgainAfterADiscoveryThatFailed) {
  environment->donors.install("app");
  environment->donors.failure = makeError("discovery", 3);
  eventsOfEnabling();
  EXPECT_TRUE(agent->featureEnabled());
  const Events failed = eventsOfReenabling();
  EXPECT_EQ(failed.at(1), "writer: didFailToDiscoverExtensions: discovery 3");
  EXPECT_EQ(failed.at(2), "writer: redonate app 1");
  environment->donors.failure = nullptr;
  EXPECT_EQ(eventsOfReenabling().at(1), "writer: didDiscoverExtensions");
  EXPECT_EQ(eventsOfReenabling(), Events{"writer: featureDidEnable"}) << "nothing is asked";
}

TEST_F(CorvelDiscoveryTest, DonatesAccountsAgainUnlessTheirVersionIsNoted) {
  const std::string accounts = AccountsBundleIdentifier;
  const auto expectDiscovery = [this](bool donates, bool notes) {
    const Events events = eventsOfDiscovery();
    EXPECT_EQ(events.front(), "caller: willLoadExtensionVersions");
    EXPECT_EQ(std::ranges::count(events, "caller: donating: email:A1"), donates);
    const std::string noted = "caller: store versions other=9 ovaro.quenlet.accounts=3";
    EXPECT_EQ(std::ranges::count(events, noted), notes);
    EXPECT_EQ(events.size() == 1, !donates);
  };
  // The table, and whether the accounts are donated again.
  const std::pair<ExtensionVersions, bool> rows[] = {{{{"other", 9}}, true},
                                                     {{{accounts, 2}, {"other", 9}}, true},
                                                     {{{accounts, 3}, {"other", 9}}, false},
                                                     {{{accounts, 4}, {"other", 9}}, false}};
  for (const auto& [versions, again] : rows) {
    agent = std::make_shared<Corvel>(environment, persistence, curated);
    persistence->versions = versions;
    expectDiscovery(again, again);
    EXPECT_EQ(eventsOfDiscovery(), Events{}) << "the table is loaded, and says so";
  }
  agent = std::make_shared<Corvel>(environment, persistence, curated);
  persistence->failure = makeError("disk", 5);
  for (int round = 0; round < 2; ++round) expectDiscovery(true, false);  // there is no table
  persistence->failure = nullptr;
  persistence->versions = rows[0].first;
  agent->loadExtensionVersions();
  persistence->failure = makeError("disk", 5);
  agent->loadExtensionVersions();
  takeTrace();
  agent->reloadAllAccounts();
  const Events events = eventsSoFar();
  EXPECT_EQ(std::ranges::count(events, "caller: store versions other=9 ovaro.quenlet.accounts=3"),
            1)
      << "what was loaded stays";
}

TEST_F(CorvelDiscoveryTest, PrintsWhatIsInstalledAndEndsAfterTenThousandSeconds) {
  setEnabled(false);
  EXPECT_EQ(eventsOfDiscovery(), Events{}) << "not even versions are loaded while they are off";
  EXPECT_EQ(printed, "");
  setEnabled(true);
  persistence->versions = {{AccountsBundleIdentifier, 3}};
  environment->donors.install("app1");
  environment->donors.installed["app2"] = std::make_shared<FakeDonorObject>();
  const std::string found =
      "Discovering all extensions\nDiscovered extensions: extension app1\n"
      "Discovered extensions: object\n";
  eventsOfDiscovery();
  EXPECT_EQ(printed, found + "Discovery completed\n");
  environment->schedulers.advance(9999.75);
  EXPECT_EQ(takeTrace(), Events{});
  testing::internal::CaptureStdout();
  environment->schedulers.advance(0.25);
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "Ending discovery\n");
  EXPECT_EQ(takeTrace(), Events{"main: cancel discovery"});

  environment->donors.failure = makeError("discovery", 3, "why");
  eventsOfDiscovery();
  EXPECT_EQ(printed, found + "Discovery failed: discovery 3: why\n");
}

}  // namespace
}  // namespace quenlet
