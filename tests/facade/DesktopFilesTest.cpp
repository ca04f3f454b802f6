#include <gmock/gmock.h>

#include <fstream>

#include "facade/DialogBackend.h"
#include "facade/SandboxedApp.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

TEST(SandboxedAppTest, TakesTheNameOfTheAppAlone) {
  struct Row final {
    const char* name;
    const char* file;
    const char* app;  // null for an error
  };
  const Row rows[] = {
      {"as Flatpak writes it",
       "[Application]\nname=org.example.App\nruntime=runtime/a/b/c\n\n[Instance]\n"
       "name=org.example.Other\n",
       "org.example.App"},
      {"no end of line", "[Application]\nname=org.example.App", "org.example.App"},
      {"a runtime", "[Runtime]\nname=org.example.Runtime\n", nullptr},
      {"two names", "[Application]\nname=org.example.A\nname=org.example.B\n", nullptr},
      {"in another group", "[Instance]\nname=org.example.App\n[Application]\n", nullptr},
      {"no identifier", "[Application]\nname=../../etc\n", nullptr},
      {"empty", "", nullptr},
      {"one of the agent's own", "[Application]\nname=ovaro.quenlet.accounts\n", nullptr},
      {"a donor's of ours", "[Application]\nname=org.quenlet.donors.kmail\n", nullptr},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    const auto app = appIdentifierIn(row.file);
    ASSERT_EQ(app.ok(), row.app != nullptr);
    if (app.ok()) {
      EXPECT_EQ(app.value(), row.app);
    }
  }
}

TEST(DialogBackendTest, PutsTheDesktopsOwnFirst) {
  const TemporaryDirectory directory;
  const auto write = [&](const char* name, const char* interfaces, const char* uses) {
    std::ofstream(directory.path() / name)
        << "[portal]\nDBusName=org.example." << name << "\nInterfaces=" << interfaces
        << "\nUseIn=" << uses << "\n";
  };
  constexpr char access[] = "org.freedesktop.impl.portal.Access";
  write("a.portal", "org.freedesktop.impl.portal.Access;", "kde");
  write("b.portal", "org.freedesktop.impl.portal.Account;org.freedesktop.impl.portal.Access",
        "x;GNOME");
  write("c.portal", "org.freedesktop.impl.portal.Accessible", "gnome");
  write("d.txt", access, "gnome");
  EXPECT_THAT(dialogBackends({directory.path(), "/nowhere"}, "ubuntu:GNOME"),
              testing::ElementsAre(DialogBackend{"org.example.b.portal", true},
                                   DialogBackend{"org.example.a.portal", false}));
}

}  // namespace
}  // namespace quenlet
