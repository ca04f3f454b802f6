#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

// Bash with the completion script of the build, and what it would offer for a command line.
class CompletionTest : public ProcessTest {
 protected:
  std::string offersFor(const std::string& line) {
    const Ran ran =
        run({"env", "PATH=" + bin.native() + ":/usr/bin:/bin", "bash", "-c",
             R"(source "$0"; COMP_LINE=$1 COMP_POINT=${#1}; _quenlet; echo "${COMPREPLY[*]}")",
             bin.parent_path() / "share/bash-completion/completions/quenlet", line});
    EXPECT_EQ(ran.code, 0) << ran.err;
    EXPECT_EQ(ran.err, "");
    return ran.out.substr(0, ran.out.size() - 1);
  }
};

TEST_F(CompletionTest, OffersWordsOptionsAndWhatTheAgentHas) {
  EXPECT_EQ(offersFor("quenlet list --bundle "), "") << "silent without an agent";
  startAgent();
  donate("com.example.mail", "Anna Berg", {"UID:a", "EMAIL:anna@example.org"});
  const std::string hostile = "x;touch $HOME/made";
  donate(hostile, "Anna Berg", {"UID:b", "TEL:+49 30 1234567"});
  donate("org:example", "Anna Berg", {"UID:c", "TEL:+49 30 98"});
  ASSERT_EQ(quenlet("reject +493098").code, 0);
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"a word", "quenlet ca", "card"},
      {"a word below a word", "quenlet account re", "remove"},
      {"an option of its own", "quenlet watch --j", "--json"},
      {"an option of all words", "quenlet account list --w", "--wide"},
      {"a choice", "quenlet card --format j", "json"},
      {"a choice behind =", "quenlet card --format=vc", "vcard"},
      {"a donor", "quenlet forget c", "com.example.mail"},
      {"not the value of another option", "quenlet card --format text --f", "--format"},
      {"what the shell takes for several words", "quenlet forget org:ex", "example"},
      {"a file", "quenlet donate /etc/hostnam", "/etc/hostname"},
      {"what was rejected", "quenlet unreject +", R"(+49\ 30\ 98)"},
      {"text of a donor", "quenlet forget x", R"(x\;touch\ \$HOME/made)"},
      {"an option of a donor's", "quenlet list --bundle c", "com.example.mail"},
      {"nothing that anybody knows", "quenlet list --bundle zzz", ""},
  };
  for (const auto& [name, line, offers] : rows) EXPECT_EQ(offersFor(line), offers) << name;
  EXPECT_FALSE(std::filesystem::exists(home / "made"));
  if (run({"/bin/sh", "-c", "command -v fish"}).code != 0) GTEST_SKIP() << "fish is not installed";
  for (const auto& [line, offer] :
       {std::pair("quenlet list --bundle c", "com.example.mail"),
        std::pair("quenlet card --format j", "json"), std::pair("quenlet watch --j", "--json"),
        std::pair("quenlet account list -", "-h"),
        std::pair("quenlet donate /etc/hostnam", "/etc/hostname")}) {
    const Ran fish =
        run({"env", "PATH=" + bin.native() + ":/usr/bin:/bin", "fish", "-c",
             "source $argv[1]; complete -C $argv[2]",
             bin.parent_path() / "share/fish/vendor_completions.d/quenlet.fish", line});
    EXPECT_THAT(fish.out, testing::StartsWith(offer)) << line << ": " << fish.err;
  }
}

}  // namespace
}  // namespace quenlet
