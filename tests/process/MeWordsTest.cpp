#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

using namespace testing;

constexpr char picture[] = "PHOTO;ENCODING=b:R0lGODlhAQABAAAAADs=";

class MeWordsTest : public ProcessTest {
 protected:
  const std::string own = temporary / "own.vcf";
};

TEST_F(MeWordsTest, TellsSoonThatTheAgentHangsWhateverTheWord) {
  writeFile(own, cardText("Anna Berg", {"EMAIL:anna@example.org"}));
  startAgent();
  EXPECT_EQ(quenlet("donate " + own + " --bundle com.example.mail").code, 0);
  const std::string exported = temporary / "exported.plist";
  writeFile(exported, quenlet("export").out);
  agent->stop();
  std::vector<std::tuple<std::string, int, const char*>> rows = {
      {"card", 3, "hint: systemctl --user restart quenlet-agent\n"},
      {"list", 3, "did not answer within 5 seconds"},
      {"status", 3, "hint: the agent hangs"},
      {"status --json", 3, "\"agentAnswers\":false"},
      {"complete bundles", 0, ""},
      {"reset --yes", 1, "not-possible 1"},
      {"clients", 0, ""},
      {"rejections", 0, ""},
      {"doctor", 1, "do: systemctl --user restart quenlet-agent\n"},
  };
  for (const char* words : {"me", "why x", "undo", "me --get phone", "clear-rejections", "export",
                            "show --output -", "remove id", "forget com.example.mail", "reject id",
                            "reject-cluster id", "account add --id id"}) {
    rows.emplace_back(words, 3, "service-error 11");
  }
  rows.emplace_back("import " + exported, 3, "service-error 11");
  rows.emplace_back("donate --bundle com.example.mail " + own, 3, "service-error 11");
  const auto begin = std::chrono::steady_clock::now();
  std::vector<std::unique_ptr<ChildProcess>> running;
  for (const auto& [line, code, said] : rows) {
    std::istringstream words((bin / "quenlet ").native() + line);
    running.push_back(start({std::istream_iterator<std::string>(words), {}}));
  }
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const auto& [line, code, said] = rows[i];
    EXPECT_EQ(running[i]->wait(), code) << line << running[i]->err();
    EXPECT_TRUE(running[i]->says(said)) << line;
  }
  // All run at once, in less time than a word waits after a first answer, even on a busy machine.
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
  agent->signal(SIGCONT);
  EXPECT_EQ(quenlet("list").code, 0);
}

TEST_F(MeWordsTest, PutsAnOwnCardInPlaceAndShowsItBeforeWhatWasDonated) {
  const std::string two = temporary / "two.vcf";
  const std::string club = temporary / "club.vcf";
  const std::string image = temporary / "me.gif";
  writeFile(own, cardText("Anna Berg", {"EMAIL;TYPE=home:anna@example.org", "TEL:none", picture}));
  writeFile(two, cardText("Anna Berg", {}) + cardText("Bo Berg", {}));
  writeFile(club, cardText("Chess", {"KIND:org"}));
  expect("me set " + own, 0, {"now this one: Anna Berg\n", "line 5: TEL without a usable value\n"});
  expect("me set " + own, 0, {"This is your own card already: Anna Berg\n"});
  expect("me set " + two, 1, {"two.vcf: it holds 2 cards; your own is one\n"});
  expect("me set " + club, 1, {"club.vcf: "});
  expect("me set none.vcf", 1, {"posix-error 2"});
  expect("me sit", 2, {"hint: did you mean set?\n"});
  expect("me --get email", 0, {"anna@example.org\n"});
  expect("me --get phone", 3, {"hint: no agent runs"});
  expect("me --image " + image, 0, {"Wrote 14 bytes, GIF, to "});
  expect("me --image " + image, 1, {"posix-error 17", "hint: --force replaces it\n"});
  expect("me", 3, {"Image   14 bytes, GIF", "hint: no agent runs"});
  EXPECT_EQ(readFile(ownersCard), readFile(own));
  EXPECT_EQ(modeOf(image), 0600U);
  startAgent();
  donate("com.example.mail", "Anna Berg",
         {"EMAIL;TYPE=work:berg@example.org", "EMAIL:anna@example.org"});
  writeFile(image, "other");
  expect(
      "me", 0,
      {"Name    Anna Berg               own card\n", "E-mail  anna@example.org  home  own card\n",
       "        berg@example.org  work  from com.example.mail  until "});
  expect("me --format json", 0,
         {R"("value":"anna@example.org","label":"home","source":"own card"})",
          R"("value":"berg@example.org","label":"work","source":"donated","origin":{"bundle)"});
  expect("me --format vcard", 0, {"EMAIL;TYPE=home:anna@example.org\r\nEMAIL;TYPE=work:berg@"});
  expect("me --get phone", 1, {"phone is not known\n"});
  expect("me --get name --format json", 2, {"usage 2"});
  expect("me --image " + image + " --force", 0, {"GIF"});
  expect("status", 0,
         {"Donations   3\n", "line 5: TEL without a usable value\n", " served: quenlet clients\n"});
  EXPECT_EQ(readFile(image).size(), 14U);
  const std::string former = readFile(own);
  writeFile(own, cardText("Berta Berg", {}));
  expect("me set " + own, 0, {"The former one is kept: " + ownersCard.native() + ".former-1\n"});
  expect("me --get name", 0, {"Berta Berg\n"});
  EXPECT_EQ(readFile(ownersCard.native() + ".former-1"), former);
  const std::string large(std::size_t{33} << 20, 'x');
  mayRemark = true;  // of the card
  writeOwnersCard(large);
  expect("me set " + own, 0, {"The former one is kept: ", ".former-2\n"});
  EXPECT_EQ(readFile(ownersCard.native() + ".former-2").size(), large.size());
  disableDonations();
  expect("me", 1, {"Berta Berg", "hint: donations are off; turn them on: quenlet enable\n"});
}

TEST_F(MeWordsTest, FindsWhatIsNotWellAndChangesNothing) {
  installCommand("systemctl", "echo enabled");
  std::filesystem::create_directories(home);
  ::setenv("XDG_RUNTIME_DIR", (temporary / "none").c_str(), 1);
  expect("doctor", 1, {"NOT WELL  agent        no agent runs\n", "well      files        0 files"});
  EXPECT_TRUE(std::filesystem::is_empty(home));
  EXPECT_FALSE(std::filesystem::exists(temporary / "none"));
  ::setenv("XDG_RUNTIME_DIR", temporary.path().c_str(), 1);
  startAgent();
  donate("com.example.mail", "Anna Berg", {});
  EXPECT_TRUE(eventually([this] { return std::filesystem::exists(donationsFile); }));
  const Ran sound = quenlet("doctor");
  EXPECT_EQ(sound.code, 0) << sound.out;
  EXPECT_THAT(sound.out, AllOf(HasSubstr("answers, with 1 donation\n"), Not(HasSubstr("NOT"))));

  std::filesystem::permissions(donationsFile, std::filesystem::perms(0644));
  mayRemark = true;  // of the card
  writeOwnersCard("no card");
  writeFile(home / "Library/Contacts/Feedback/feedback.plist", "<plist>");
  installCommand("systemctl", "echo masked");
  expect(
      "doctor --wide", 1,
      {"donations.plist is open to others\n", "do: chmod go= " + donationsFile.native(),
       "NOT WELL  own card", "NOT WELL  records      feedback.plist is damaged: ", "NOT WELL  unit",
       "do: systemctl --user unmask quenlet-agent.service\n", "well      agent"});
  expect("doctor --json", 1, {R"({"check":"own card","well":false,"found":)"});
  writeOwnersCard(cardText("Anna Berg", {"TEL:no"}));
  expect("status --wide", 0, {"read, without some of its lines:", "TEL"});
  expect("doctor --wide", 1, {"read, without 1 of its lines"});
  for (const auto& [service, socket, said] :
       {std::tuple<std::string, std::string, std::string>{
            "disabled", "enabled", "well      unit         socket enabled: starts on demand\n"},
        {"disabled", "disabled", "NOT WELL  unit         disabled: systemd does not"},
        {"disabled", "not-found", "do: systemctl --user enable --now quenlet-agent\n"},
        {"enabled", "masked", "do: systemctl --user unmask quenlet-agent.socket\n"}}) {
    installCommand("systemctl",
                   "[ $3 = quenlet-agent.socket ] && echo " + socket + " || echo " + service);
    expect("doctor --wide", 1, {said});
  }
  expect("clients --wide", 0, {tool.native() + "  ", "  all         served  "});
  expect("clients --json", 0, {tool.native() + "\",\"served\":true,\"files\""});
}

}  // namespace
}  // namespace quenlet
