#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

// The command of an installation with entitlements of its own.
class DoctorWordTest : public ProcessTest {
 protected:
  DoctorWordTest() {
    std::filesystem::create_directories(prefix / "bin");
    std::filesystem::copy_file(tool, prefix / "bin/quenlet");
    tool = prefix / "bin/quenlet";
  }
  void install(const std::string& name, const std::string& content = "\x7f\x45LF",
               mode_t mode = 0755) {
    writeFile(prefix / "bin" / name, content, mode);
  }

  // Short, so that a path below it fits into a line even below a longer temporary directory.
  const std::filesystem::path prefix = temporary / "in";
};

TEST_F(DoctorWordTest, SaysWhetherAProgramIsServedAndWhatToDo) {
  const std::string files = prefix / "share/quenlet/entitlements";
  writeFile(files + "/donors.plist", goldenFile("tests/process/entitlements/donors.plist"));
  writeFile(files + "/loose.plist", goldenFile("tests/process/entitlements/loose.plist"), 0664);
  std::filesystem::create_symlink("loose.plist", files + "/linked.plist");
  for (const char* name : {"limited", "all", "mute", "denied", "unnamed"}) install(name);
  install("open", "", 0775);
  install("both", "", 0757);
  install("takes-on", "", 04755);
  const std::string farOpen = std::string(80, 'f') + "/open";
  install(farOpen, "", 0775);
  install("no program", "", 0644);
  install("script", "#! " + (prefix / "bin/all").native() + " -x\n");
  install("by env", "#!/usr/bin/env -S NAME=1 -i limited -x\n");
  install("by envs rules", "#!/usr/bin/env -u NAME limited\n");
  install("unserved", "#!" + (prefix / "bin/unnamed").native());
  install("returns", "#!/bin/sh\r\n");
  install("loop", "#!" + (prefix / "bin/loop").native() + "\n");
  std::filesystem::create_symlink("limited", prefix / "bin/link");
  ::setenv("PATH", ((prefix / "bin").native() + ":" + formerPath).c_str(), 1);

  using Said = std::vector<std::string>;
  const std::tuple<const char*, int, Said> rows[] = {
      {"limited", 0,
       Said{"/bin/limited is served.", "donated under com.example.one, com.example.two.",
            "It is named in " + files + "/donors.plist"}},
      {"all", 0, Said{"It may change what anybody donated."}},
      {"mute", 0, Said{"It may change nothing that was donated."}},
      {"link", 0, Said{"/bin/limited is served."}},
      {"../bin/link", 0, Said{"/bin/limited is served."}},
      {"script", 0, Said{"/bin/script is a script.", "/bin/all is served."}},
      {"by env", 0, Said{"/bin/by env is a script.", "/bin/limited is served."}},
      {"denied", 1,
       Said{"/bin/denied is not served: its entitlements do not grant it.",
            "do: set ovaro.private.contacts to true for it in " + files + "/donors.plist"}},
      {"unnamed", 1,
       Said{"do: as root, write /etc/quenlet/entitlements/unnamed.plist",
            "do: look at " + files + "/loose.plist, which is ignored: ",
            "do: chmod go-w '" + files + "/loose.plist'",
            "<key>" + (prefix / "bin/unnamed").native() + "</key><dict>",
            "<key>ovaro.private.contacts</key><true/>"}},
      {"unserved", 1,
       Said{"/bin/unnamed is not served: ", "do: rather than that program, name a copy"}},
      {"open", 1,
       Said{"is not served: it is not trusted: ",
            "do: chmod go-w '" + (prefix / "bin/open").native()}},
      {farOpen.c_str(), 1, Said{"do: chmod go-w '" + (prefix / "bin" / farOpen).native() + "'\n"}},
      {"both", 1, Said{"names it; and it is not trusted: ", "do: chmod go-w '", "<key>"}},
      {"takes-on", 1, Said{"do: chmod ug-s '" + (prefix / "bin/takes-on").native() + "'"}},
      {"no program", 1, Said{"quenlet: posix-error 13: execute "}},
      {"by envs rules", 1, Said{"/by envs rules: it is unclear what env starts for it"}},
      {"returns", 1, Said{"/bin/returns: its first line ends with a return character"}},
      {"loop", 1, Said{"/bin/loop: too many scripts run one another"}},
      {"missing", 1, Said{"quenlet: posix-error 2: find ", "No such file or directory"}},
      {".", 1, Said{"/bin: it is not a file that can be executed"}},
  };
  for (const auto& [program, code, said] : rows) {
    expect("doctor '" + (prefix / "bin" / program).native() + "'", code, said);
  }
  EXPECT_EQ(quenlet("doctor --json " + (prefix / "bin/script").native()).out,
            "{\"executable\":\"" + (prefix / "bin/all").native() + "\",\"scripts\":[\"" +
                (prefix / "bin/script").native() + "\"],\"served\":true,\"files\":[\"" + files +
                "/donors.plist\"],\"advice\":[]}\n");
  // A command for a link would change what it leads to.
  const std::string unnamed = quenlet("doctor --wide " + (prefix / "bin/unnamed").native()).out;
  EXPECT_THAT(unnamed, testing::HasSubstr("/linked.plist, which is ignored: "));
  EXPECT_THAT(unnamed, testing::Not(testing::HasSubstr("/linked.plist'")));
  EXPECT_THAT(quenlet("doctor cat").err, testing::HasSubstr("hint: name it by its path: "));
}

TEST_F(DoctorWordTest, AdvisesCommandsThatAShellRunsAsTheyStand) {
  const std::filesystem::path place = temporary / "it's a home";
  const std::filesystem::path file = place / "Library/Contacts/Donations/donations.plist";
  writeFile(file, "", 0644);
  ::setenv("HOME", place.c_str(), 1);
  const std::string found = quenlet("doctor").out;
  const std::size_t command = found.find("do: chmod go= ");
  ASSERT_NE(command, found.npos) << found;
  const std::string line = found.substr(command + 4, found.find('\n', command) - command - 4);
  EXPECT_EQ(run({"sh", "-c", line}).code, 0) << line;
  EXPECT_EQ(modeOf(file), 0600);
  ::setenv("HOME", file.c_str(), 1);
  EXPECT_THAT(quenlet("doctor --wide").out, testing::HasSubstr("do: set HOME to one\n"));
}

}  // namespace
}  // namespace quenlet
