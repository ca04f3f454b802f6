#include <sstream>

#include "tests/core/AgentFixture.h"

namespace quenlet {
namespace {

using namespace CorvelSelector;

const std::string posted = std::string("writer: post ") + MeCardValuesDidChangeNotification;

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
  const std::string disabling = "writer: featureWillDisable";
  const std::string enabling = "writer: featureWillEnable";
  const std::string enabled = "writer: featureDidEnable";
  const std::string deleted = "writer: featureDidDisable";
  const Events off = {disabling, posted};
  const Events onAgain = {enabling, enabled, posted};   // from off: the enable routine
  const Events onBefore = {enabling, posted, enabled};  // from any other state
  const Events deletion = {deleted, "io: store "};
  const struct {
    const char* script;
    std::vector<Events> parts;
    const char* held;  // "refused" for a disabled feature
  } rows[] = {
      {"on", {onBefore}, "list a"},
      {"on on", {onBefore, onBefore}, "list a"},
      {"off", {off}, "error 1"},
      {"off +29.9 on", {off, onAgain}, "list a"},
      {"off +29.9 on +60", {off, onAgain}, "list a"},
      {"off +29.9 off +29.9 on", {off, off, onAgain}, "list a"},
      {"off +30 on", {off, deletion, onAgain}, "list "},
      {"off +30 on on", {off, deletion, onAgain, onBefore}, "list "},
      {"off +30 off +60", {off, deletion, off, deletion}, "error 1"},
      {"start on stop on start off", {onBefore, off}, "error 1"},
      {"off +30 on off on", {off, deletion, onAgain, off, onAgain}, "list "},
      {"on off +10 stop +60 on", {onBefore, off}, "error 1"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.script);
    agent->stop();
    persistence->kept = {email("a@x", from("app", "a"))};
    agent = std::make_shared<Corvel>(environment, persistence, curated);
    agent->restorePersistedState();
    agent->start();
    run();
    static_cast<void>(takeTrace());
    follow(row.script);
    Events expected;
    for (const auto& part : row.parts) expected.insert(expected.end(), part.begin(), part.end());
    EXPECT_EQ(takeTrace(), expected);
    EXPECT_EQ(replyTo(list), row.held);
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

TEST_F(CorvelFeatureTest, IsChangedByHandWithoutANotification) {
  EXPECT_FALSE(agent->featureEnabled());
  const Events enabling = {"writer: featureWillEnable"};
  const Events again = {"writer: featureWillEnable", "writer: featureDidEnable"};
  for (const auto& [enabled, expected] :
       std::vector<std::pair<bool, Events>>{{true, enabling},
                                            {true, enabling},
                                            {false, {"writer: featureWillDisable"}},
                                            {true, again}}) {
    write([this, flag = enabled] { agent->setFeatureEnabled(flag); });
    EXPECT_EQ(takeTrace(), expected);
    EXPECT_EQ(agent->featureEnabled(), enabled);
  }
  write([this] { agent->reenableDonations(); });
  EXPECT_EQ(takeTrace(), Events{"writer: featureDidEnable"});
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
