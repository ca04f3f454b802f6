#include <sstream>

#include "tests/core/AgentFixture.h"

namespace quenlet {
namespace {

using namespace CorvelSelector;

class CorvelFeatureTest : public AgentFixture {
 protected:
  // Follows a script of "on", "off" (values of the preference), "start", "stop" and "+<seconds>".
  void follow(const std::string& script) {
    std::istringstream words(script);
    for (std::string word; words >> word;) {
      if (word.front() == '+') {
        environment->schedulers.advance(std::stod(word));
      } else if (word == "stop") {
        agent->stop();
      } else if (word == "start") {
        agent->startMonitoringPreferences();
      } else {
        static_cast<void>(environment->preferences->setDonationsEnabled(word == "on"));
      }
      run();
    }
  }
};

TEST_F(CorvelFeatureTest, FollowsThePreference) {
  const std::string enabling = "writer: featureWillEnable";
  const std::string enabled = "writer: featureDidEnable";
  const Events off = {"writer: featureWillDisable", posted};
  // From off: the enable routine asks the sources.
  const Events onAgain = {enabling,
                          "writer: willDiscoverExtensions",
                          "writer: didDiscoverExtensions",
                          "writer: willSaveExtensionVersions",
                          enabled,
                          posted};
  const Events onBefore = {enabling, posted, enabled};  // from any other state
  const Events deletion = {"writer: featureDidDisable", "io: store "};
  const std::tuple<const char*, std::vector<Events>, const char*> rows[] = {
      {"on", {onBefore}, "list a"},
      {"off", {off}, "error 1"},
      {"off +29.9 on +60", {off, onAgain}, "list a"},
      {"off +29.9 off +29.9 on", {off, off, onAgain}, "list a"},
      {"off +30 on", {off, deletion, onAgain}, "list "},
      {"start on stop on start off", {onBefore, off}, "error 1"},
      {"off +30 on off on", {off, deletion, onAgain, off, onAgain}, "list "},
      {"on off +10 stop +60 on", {onBefore, off}, "error 1"},
  };
  for (const auto& [script, parts, held] : rows) {
    SCOPED_TRACE(script);
    agent->stop();
    persistence->kept = {email("a@x", from("app", "a"))};
    agent = std::make_shared<Corvel>(environment, persistence, curated);
    agent->restorePersistedState();
    agent->start();
    run();
    static_cast<void>(takeTrace());
    follow(script);
    Events expected;
    for (const auto& part : parts) expected.insert(expected.end(), part.begin(), part.end());
    EXPECT_EQ(takeTrace(), expected);
    EXPECT_EQ(replyTo(list), held);
  }
}

TEST_F(CorvelFeatureTest, DeletesOnRequestAndGoesOnServing) {
  hold({email("a@x", from("app", "a"))});
  persistence->failure = makeError("disk", 5);
  agent->disableDonations();
  run();
  EXPECT_EQ(takeTrace(), (Events{"writer: featureDidDisable", "io: store "}));
  EXPECT_TRUE(agent->featureEnabled());
  EXPECT_EQ(replyTo(list), "list ");
  EXPECT_EQ(replyTo(fetch), "card");
}

TEST_F(CorvelFeatureTest, RebuildsTheCardWhenTheCuratedOneChanges) {
  hold({email("a@x", from("app", "a")), email("b@x", from("app", "b"))});
  agent->start();
  curated->emailAddresses = {"a@x"};
  EXPECT_EQ(replyTo(fetch), "card a@x b@x");
  curated->changeHandler();
  EXPECT_EQ(takeTrace(), Events{});
  run();
  EXPECT_EQ(takeTrace(), Events{posted});
  EXPECT_EQ(replyTo(fetch), "card b@x");

  agent->stop();
  agent = std::make_shared<Corvel>(environment, persistence, curated);
  curated->changeHandler();
  run();
  EXPECT_EQ(takeTrace(), Events{});
}

}  // namespace
}  // namespace quenlet
