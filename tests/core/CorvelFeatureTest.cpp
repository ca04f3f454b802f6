#include "tests/core/AgentFixture.h"

namespace quenlet {
namespace {

class CorvelFeatureTest : public AgentFixture {
 protected:
  // Follows a script of "on", "off" (values of the preference), "start", "stop", "+<seconds>", and
  // "fail" and "heal" for what discovery does from then on.
  void follow(const std::string& script) {
    std::istringstream words(script);
    for (std::string word; words >> word;) {
      if (word.front() == '+') environment->schedulers.advance(std::stod(word));
      if (word == "stop") agent->stop();
      if (word == "start") agent->startMonitoringPreferences();
      if (word == "fail") environment->donors.failure = makeError("discovery", 3);
      if (word == "heal") environment->donors.failure = nullptr;
      if (word == "on" || word == "off") {
        static_cast<void>(environment->preferences->setDonationsEnabled(word == "on"));
      }
      run();
    }
  }
  void restart() {
    agent->stop();
    environment->donors.failure = nullptr;
    persistence->kept = {email("a@x", from("app", "a"))};
    agent = std::make_shared<Corvel>(environment, persistence, curated);
    agent->restorePersistedState();
    agent->start();
    eventsSoFar();
  }
};

TEST_F(CorvelFeatureTest, FollowsThePreference) {
  const std::string enabling = "writer: featureWillEnable";
  const std::string enabled = "writer: featureDidEnable";
  const auto soliciting = [&](const char* discovered) {
    return Events{enabling,   "writer: willDiscoverExtensions",
                  discovered, "writer: willSaveExtensionVersions",
                  enabled,    posted};
  };
  const Events off = {"writer: featureWillDisable", posted};
  const Events onAgain = soliciting("writer: didDiscoverExtensions");
  const Events onInVain = soliciting("writer: didFailToDiscoverExtensions: discovery 3");
  const Events onBefore = {enabling, posted, enabled};  // from any other state
  const Events deletion = {"writer: featureDidDisable", "io: store "};
  const std::tuple<const char*, std::vector<Events>, const char*> rows[] = {
      {"", {}, "error 1"},
      {"on", {onBefore}, "list a"},
      {"on on", {onBefore, onBefore}, "list a"},
      {"off", {off}, "error 1"},
      {"off +29.99 on +60", {off, onAgain}, "list a"},
      {"off +29.99 off +29.99 on +60", {off, off, onAgain}, "list a"},
      {"off +20 off +29.99 off +30 +60 on", {off, off, off, deletion, onAgain}, "list "},
      {"off +30 on", {off, deletion, onAgain}, "list "},
      {"start on stop on start off", {onBefore, off}, "error 1"},
      {"start on start off +29.99 on", {onBefore, off, onAgain}, "list a"},
      {"start off +10 stop start on", {off, onAgain, {enabled}}, "list a"},
      {"off +30 on off on", {off, deletion, onAgain, off, onAgain}, "list "},
      {"on off +10 stop start +60", {onBefore, off}, "error 1"},
      {"off fail on", {off, onInVain}, "list a"},
      {"off fail on heal on", {off, onInVain, onBefore}, "list a"},
      {"off fail on heal off on", {off, onInVain, off, onAgain}, "list a"},
  };
  for (const auto& [script, parts, held] : rows) {
    SCOPED_TRACE(script);
    restart();
    follow(script);
    Events expected;
    for (const auto& part : parts) expected.insert(expected.end(), part.begin(), part.end());
    EXPECT_EQ(takeTrace(), expected);
    EXPECT_EQ(replyTo(CorvelSelector::list), held);
    const std::string card = held == std::string("list a") ? "card a@x" : "card";
    EXPECT_EQ(replyTo(CorvelSelector::fetch), held[0] == 'e' ? held : card);
  }
}

TEST_F(CorvelFeatureTest, MonitorNeedsNobodyToTell) {
  const auto monitor = std::make_shared<DonationPreferencesMonitor>(environment->preferences,
                                                                    nullptr, environment->provider);
  monitor->startMonitoring();
  follow("on off +30");
  EXPECT_EQ(takeTrace(), Events{});
}

TEST_F(CorvelFeatureTest, SaysNothingToOthersWhenItIsToldWhatToDo) {
  restart();
  EXPECT_EQ(setEnabled(true), Events{"writer: featureWillEnable"});
  agent->disableDonations();
  EXPECT_EQ(eventsSoFar(), (Events{"writer: featureDidDisable", "io: store "}));
  EXPECT_EQ(replyTo(CorvelSelector::list), "list ") << "still served";
  EXPECT_EQ(replyTo(CorvelSelector::fetch), "card");
  EXPECT_EQ(setEnabled(false), Events{"writer: featureWillDisable"});
  EXPECT_EQ(eventsOfReenabling(), Events{"writer: featureDidEnable"})
      << "nothing is asked while disabled";
  EXPECT_FALSE(agent->featureEnabled());
}

TEST_F(CorvelFeatureTest, MakesTheCardAnewWhenTheCuratedFactsChange) {
  restart();
  setEnabled(true);
  curated->emailAddresses = {"a@x"};
  EXPECT_EQ(replyTo(CorvelSelector::fetch), "card a@x") << "made when something changes";
  curated->changeHandler();
  EXPECT_EQ(eventsSoFar(), Events{posted});
  EXPECT_EQ(replyTo(CorvelSelector::fetch), "card");
  agent->stop();
  const std::weak_ptr<Corvel> gone =
      std::exchange(agent, std::make_shared<Corvel>(environment, persistence, curated));
  EXPECT_TRUE(gone.expired()) << "the provider does not hold the agent";
  curated->changeHandler();
}

}  // namespace
}  // namespace quenlet
