#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using testing::HasSubstr;

class WatchWordTest : public ProcessTest {
 protected:
  std::unique_ptr<ChildProcess> startWatching(std::vector<std::string> options = {}) {
    options.insert(options.begin(), {bin / "quenlet", "watch"});
    auto watcher = start(std::move(options));
    EXPECT_TRUE(eventually([&] { return watcher->says("watching"); }));
    return watcher;
  }
};

TEST_F(WatchWordTest, TellsWhatChangedAndWhetherAnAgentIsThere) {
  const auto text = startWatching();
  const auto json = startWatching({"--json"});
  EXPECT_THAT(text->err(), HasSubstr("nobody listens under ovaro.quenlet.agent\nhint: "));
  EXPECT_EQ(text->out(), "watching…\n");
  EXPECT_THAT(json->out(), HasSubstr(R"("event":"watching","agentAnswers":false})"));

  const auto donates = [this](const char* bundle, std::vector<std::string> lines) {
    return [this, bundle, lines] { donate(bundle, "Anna Berg", lines); };
  };
  const std::tuple<const char*, std::function<void()>, const char*, const char*> cases[] = {
      {"an agent", [&] { startAgent(); }, "Z  An agent is there.\n", R"("event":"agentAppeared"})"},
      {"two values",
       donates("com.example.mail", {"UID:a", "EMAIL:anna@example.org", "TEL:+49 30 12"}),
       "  added  e-mail  anna@example.org  com.example.mail  until 20",
       R"({"kind":"emailAddress","value":"anna@example.org","origin":{"bundle)"},
      {"one of them again, and another",
       donates("com.example.mail", {"UID:a", "EMAIL:anna@example.org", "TEL:+49 30 34"}),
       "  renewed  e-mail  anna@example.org  com.example.mail  until 20",
       R"("to":{"kind":"phoneNumber","value":"+49 30 34")"},
      {"the value of another donor", donates("com.example.shop", {"UID:b", "TEL:+49 30 34"}),
       "  Donations have changed, the card has not.\n", R"("added":[],"removed":[],"changed":[]})"},
      {"the first donor's end", [&] { EXPECT_EQ(quenlet("forget com.example.mail").code, 0); },
       "  removed  e-mail  anna@example.org", R"("removed":[{"kind":"emailAddress",)"},
      {"a refusal",
       [&] {
         disableDonations();
         EXPECT_EQ(quenlet("card").code, 1);
       },
       "Z  The agent gives no card: ", R"("event":"refused","error":{)"},
      {"a crash", [&] { EXPECT_EQ(stopAgent(SIGKILL), -SIGKILL); }, "Z  The agent has ended.\n",
       R"("event":"agentEnded"})"},
  };
  for (const auto& [name, action, inText, inJSON] : cases) {
    SCOPED_TRACE(name);
    action();
    EXPECT_TRUE(eventually([&, said = inText] { return text->says(said); })) << text->out();
    EXPECT_TRUE(eventually([&, said = inJSON] { return json->says(said); })) << json->out();
  }
  EXPECT_THAT(text->out(), AllOf(HasSubstr("  was      phone   +49 30 12"),
                                 HasSubstr("  added  name    Anna Berg")));
  text->signal(SIGINT);
  EXPECT_EQ(text->wait(), 0);
}

}  // namespace
}  // namespace quenlet
