#include "tests/core/AgentFixture.h"

namespace quenlet {
namespace {

class CorvelDiscoveryTest : public AgentFixture {
 protected:
  // What the diagnostic discovery prints, the trace left as it is.
  [[nodiscard]] std::string printed(double forSeconds = 0) {
    testing::internal::CaptureStdout();
    agent->discoverAllExtensions();
    environment->schedulers.advance(forSeconds);
    return testing::internal::GetCapturedStdout();
  }
  Events eventsOfEnabling() {
    setEnabled(false);
    static_cast<void>(takeTrace());
    setEnabled(true);
    return takeTrace();
  }
  void addAccount() {
    environment->accounts->held.push_back(std::make_shared<const Account>(
        Account{.identifier = "A1", .username = "a@x.org", .enabledDataclasses = {"mail"}}));
  }
};

TEST_F(CorvelDiscoveryTest, AsksExtensionsThenAccountsThenSIMCardsWhenDonationsComeOnAgain) {
  environment->donors.install("app1");
  environment->donors.install("app2");
  environment->donors.installed["app3"] = std::make_shared<FakeDonorObject>();
  addAccount();
  PlatformServices services = environment->services();
  services.deviceInfo = [this] {
    environment->trace.note("look for SIM cards");
    return environment->device;
  };
  const PlatformServices::Scope noting(services);
  const Events expected = {"writer: featureWillEnable",
                           "writer: willDiscoverExtensions",
                           "writer: didDiscoverUnexpectedExtensionType: object",
                           "writer: didDiscoverExtensions",
                           "writer: redonate 1",
                           "writer: redonate 1",
                           "writer: donating: email:A1",
                           "writer: agentWillHandleRequest: donateMeCardValues:completionHandler:",
                           "writer: acceptingDonations:",
                           "writer: willSaveExtensionVersions",
                           "writer: look for SIM cards",
                           "writer: featureDidEnable"};
  Events events = eventsOfEnabling();
  events.resize(expected.size());
  EXPECT_EQ(events, expected);
  EXPECT_EQ(replyTo(CorvelSelector::list), "list email:A1");
}

TEST_F(CorvelDiscoveryTest, SolicitsAgainAfterADiscoveryThatFailed) {
  environment->donors.install("app");
  environment->donors.failure = makeError("discovery", 3);
  for (int round = 0; round < 2; ++round) {
    if (round == 0) {
      eventsOfEnabling();
    } else {
      agent->lock()->performWriterBlock([this] { agent->reenableDonations(); });
      run();
      const Events events = takeTrace();
      EXPECT_EQ(events.at(1), "writer: didFailToDiscoverExtensions: discovery 3");
      EXPECT_EQ(events.at(2), "writer: redonate 1");
    }
    EXPECT_TRUE(agent->featureEnabled());
  }
  environment->donors.failure = nullptr;
  agent->lock()->performWriterBlock([this] { agent->reenableDonations(); });
  run();
  EXPECT_EQ(takeTrace().at(1), "writer: didDiscoverExtensions");
  agent->lock()->performWriterBlock([this] { agent->reenableDonations(); });
  run();
  EXPECT_EQ(takeTrace(), Events{"writer: featureDidEnable"}) << "enabled: nothing is asked";
}

TEST_F(CorvelDiscoveryTest, PrintsWhatIsInstalledUntilItEnds) {
  persistence->versions = {{AccountsBundleIdentifier, 3}};
  environment->donors.install("app");
  EXPECT_EQ(printed(9999),
            "Discovering all extensions\nDiscovered extensions: extension\nDiscovery completed\n");
  environment->donors.failure = makeError("discovery", 3);
  EXPECT_EQ(printed(10000),
            "Discovering all extensions\nDiscovered extensions: extension\n"
            "Discovery failed: discovery 3\nEnding discovery\nEnding discovery\n");
  EXPECT_EQ(environment->donors.openDiscoveries, 0U);
  setEnabled(false);
  static_cast<void>(takeTrace());
  EXPECT_EQ(printed(10000), "");
  EXPECT_EQ(takeTrace(), Events{});
}

TEST_F(CorvelDiscoveryTest, DonatesAccountsAgainUnlessTheirVersionIsNoted) {
  addAccount();
  using Versions = ExtensionVersions;
  const std::pair<Versions, bool> rows[] = {
      {Versions(), true},
      {Versions{{AccountsBundleIdentifier, 2}, {"other", 9}}, true},
      {Versions{{AccountsBundleIdentifier, 3}}, false},
      {Versions{{AccountsBundleIdentifier, 4}}, false},
  };
  for (const auto& [versions, reloads] : rows) {
    SCOPED_TRACE(versions.size());
    agent = std::make_shared<Corvel>(environment, persistence, curated);
    persistence->versions = versions;
    ExtensionVersions expected = versions;
    if (reloads) expected[AccountsBundleIdentifier] = 3;
    for (int round = 0; round < 2; ++round) {
      static_cast<void>(printed());
      const Events events = takeTrace();
      EXPECT_EQ(std::count(events.begin(), events.end(), "caller: store versions"),
                reloads && round == 0 ? 1 : 0);
      EXPECT_EQ(persistence->versions, expected);
    }
  }
  agent = std::make_shared<Corvel>(environment, persistence, curated);
  persistence->failure = makeError("disk", 5);
  static_cast<void>(printed());
  EXPECT_EQ(takeTrace().at(1), "caller: donating: email:A1")
      << "no table: the accounts are donated again";
}

}  // namespace
}  // namespace quenlet
