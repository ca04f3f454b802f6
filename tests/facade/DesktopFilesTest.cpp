#include <gmock/gmock.h>

#include "facade/DialogBackend.h"
#include "facade/SandboxedApp.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

TEST(SandboxedAppTest, TakesTheNameOfTheAppAlone) {
  // No app stands for an error.
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"as Flatpak writes it",
       "[Application]\nname=org.example.App\nruntime=runtime/a/b/c\n\n[Instance]\n"
       "name=org.example.Other\n",
       "org.example.App"},
      {"no end of line", "[Application]\nname=org.example.App", "org.example.App"},
      {"a runtime", "[Runtime]\nname=org.example.Runtime\n", ""},
      {"two names", "[Application]\nname=org.example.A\nname=org.example.B\n", ""},
      {"two names, with a flag", "[Application]\nname=org.example.A\nname[$i]=org.example.B\n", ""},
      {"another key twice", "[Application]\nname=org.example.A\n[Context]\nx=1\nx=2\n", ""},
      {"in another group", "[Instance]\nname=org.example.App\n[Application]\n", ""},
      {"no identifier", "[Application]\nname=../../etc\n", ""},
      {"empty", "", ""},
      {"one of the agent's own", "[Application]\nname=ovaro.quenlet.accounts\n", ""},
      {"a donor's of ours", "[Application]\nname=org.quenlet.donors.kmail\n", ""},
  };
  for (const auto& [name, file, expected] : rows) {
    const auto app = appIdentifierIn(file);
    EXPECT_EQ(app.ok() ? app.value() : "", expected) << name;
  }
}

TEST(SandboxedAppTest, KnowsTheHostAndDoubtsTheRest) {
  const auto host = sandboxedAppOf(::getpid());
  ASSERT_TRUE(host.ok()) << host.error()->description();
  EXPECT_EQ(host.value(), std::nullopt);
  constexpr pid_t beyondAll = 1 << 30;
  EXPECT_FALSE(sandboxedAppOf(beyondAll).ok());
}

class DialogBackendTest : public testing::Test {
 protected:
  void write(const std::string& name, const std::string& interfaces, const std::string& uses) {
    directory.write("portals/" + name, "[portal]\nDBusName=org.example." + name +
                                           "\nInterfaces=" + interfaces + "\nUseIn=" + uses + "\n");
  }
  // "b a": those of this desktop in capitals.
  std::string asked() {
    std::string text;
    for (const auto& backend :
         dialogBackends({{directory / "user", "/nowhere", directory / "system"},
                         {directory / "portals", "/nowhere"},
                         "ubuntu:GNOME"})) {
      const char letter = backend.busName[sizeof("org.example.") - 1];
      text += backend.isOfThisDesktop ? static_cast<char>(letter - 'a' + 'A') : letter;
    }
    return text;
  }

  const TemporaryDirectory directory;
  const std::string access = "org.freedesktop.impl.portal.Access";
};

TEST_F(DialogBackendTest, PutsTheDesktopsOwnFirst) {
  write("a.portal", access + ";", "kde");
  write("b.portal", "org.freedesktop.impl.portal.Account;" + access, "x;GNOME");
  write("c.portal", access + "ible", "gnome");
  write("d.txt", access, "gnome");
  std::filesystem::rename(directory / "portals/b.portal", directory / "b");
  std::filesystem::create_symlink("../b", directory / "portals/b.portal");
  EXPECT_EQ(::mkfifo((directory / "portals/e.portal").c_str(), 0600), 0);
  EXPECT_EQ(asked(), "Ba");
}

TEST_F(DialogBackendTest, AsksWhomTheConfigurationNames) {
  write("a.portal", access, "");
  write("b.portal", access, "gnome");
  write("c.portal", "org.freedesktop.impl.portal.Account", "gnome");
  // Files, each with what is below [preferred] in it.
  using Files = std::vector<std::string>;
  const std::string large = "user/portals.conf @=b\n" + std::string(65536, '#');
  const std::tuple<const char*, Files, const char*> rows[] = {
      {"no file", Files{}, "Ba"},
      {"by the interface", Files{"user/portals.conf default=b\n@=a"}, "A"},
      {"by default", Files{"user/portals.conf default=a;b"}, "AB"},
      {"in its order, as installed", Files{"user/portals.conf @=c;x;b;a;"}, "BA"},
      {"all", Files{"user/portals.conf default=*"}, "AB"},
      {"nobody", Files{"user/portals.conf @=none\ndefault=a"}, ""},
      {"nobody else", Files{"user/portals.conf @=a;none;b"}, "A"},
      {"only what is not there", Files{"user/portals.conf @=c;x"}, "Ba"},
      {"of another interface", Files{"user/portals.conf org.example.Other=a"}, "Ba"},
      {"the desktop's own", Files{"user/portals.conf @=none", "user/gnome-portals.conf @=a"}, "A"},
      {"its first name", Files{"user/ubuntu-portals.conf @=b", "user/gnome-portals.conf @=a"}, "B"},
      {"the user's first", Files{"system/gnome-portals.conf @=b", "user/portals.conf @=a"}, "A"},
      {"the system's", Files{"system/portals.conf @=a"}, "A"},
      {"damaged", Files{"user/portals.conf @=b\n[broken", "system/portals.conf @=a"}, "A"},
      {"too large", Files{large, "system/portals.conf @=a"}, "A"},
  };
  for (const auto& [name, files, expected] : rows) {
    for (const std::string& file : files) {
      const std::size_t blank = file.find(' ');
      std::string written = "[preferred]\n" + file.substr(blank + 1) + "\n";
      const std::size_t place = written.find('@');
      if (place != written.npos) written.replace(place, 1, access);
      directory.write(file.substr(0, blank), written);
    }
    EXPECT_EQ(asked(), expected) << name;
    for (const char* each : {"user", "system"}) std::filesystem::remove_all(directory / each);
  }
}

}  // namespace
}  // namespace quenlet
