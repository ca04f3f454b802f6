#include "platform/ipc/EntitlementDatabase.h"

#include <gmock/gmock.h>

#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

class EntitlementDatabaseTest : public testing::Test {
 protected:
  static std::string grant(const std::string& program, const std::string& value) {
    return "<plist version=\"1.0\"><dict><key>" + program + "</key><dict><key>card</key>" + value +
           "</dict></dict></plist>";
  }
  // The value that a program in the prefix has for "card".
  static std::optional<PropertyList> card(const EntitlementDatabase& database,
                                          const std::filesystem::path& program) {
    const auto entitlements = database.entitlementsOf(program);
    const PropertyList* value = entitlements ? findEntry(*entitlements, "card") : nullptr;
    return value == nullptr ? std::nullopt : std::optional(*value);
  }
  // An entitled program, and its path.
  std::filesystem::path program(const std::string& name, mode_t mode = 0755) {
    writeFile(prefix / name, "program", mode);
    return prefix / name;
  }

  TemporaryDirectory directory;
  const std::filesystem::path prefix = std::filesystem::canonical(directory.path());
  const std::filesystem::path files = prefix / "share/quenlet/entitlements";
  const std::filesystem::path configuration = prefix / "etc";
  const std::filesystem::path configured = configuration / "quenlet/entitlements";
};

TEST_F(EntitlementDatabaseTest, TakesTrustedFilesAndNamesTheOthers) {
  const auto near = program("bin/near");
  const auto far = program("far");
  writeFile(files / "a.plist", grant("bin/near", "<true/>"));
  writeFile(files / "b.plist", grant(far, "<integer>1</integer>"));
  writeFile(files / "c.plist", grant("bin/near", "<string>later</string>"), 0600);
  writeFile(files / "group.plist", grant(program("group"), "<true/>"), 0664);
  writeFile(files / "others.plist", grant(program("others"), "<true/>"), 0646);
  writeFile(files / "broken.plist", "<plist version=\"1.0\"><dict><key>secret");
  writeFile(files / "shape.plist",
            "<plist version=\"1.0\"><dict><key>/shape</key><true/></dict></plist>");
  writeFile(files / "notes.txt", grant(program("text"), "<true/>"));
  writeFile(prefix / "elsewhere", grant(program("linked"), "<true/>"));
  std::filesystem::create_symlink(prefix / "elsewhere", files / "link.plist");
  writeFile(files / "foreign.plist", grant(program("foreign"), "<true/>"));
  const bool isRoot = ::chown((files / "foreign.plist").c_str(), 4711, 4711) == 0;
  ASSERT_EQ(::mkfifo((files / "pipe.plist").c_str(), 0600), 0);

  testing::internal::CaptureStderr();
  const EntitlementDatabase database(prefix);
  const std::string report = testing::internal::GetCapturedStderr();

  EXPECT_EQ(card(database, near), PropertyList("later"));
  EXPECT_EQ(card(database, far), PropertyList(1));
  for (const char* other : {"group", "others", "text", "linked", "none"}) {
    EXPECT_EQ(card(database, prefix / other), std::nullopt) << other;
  }
  EXPECT_EQ(card(database, prefix / "foreign").has_value(), !isRoot);
  for (const char* file : {"group", "others", "broken", "shape", "pipe", "link"}) {
    EXPECT_NE(report.find("/" + std::string(file) + ".plist are ignored"), std::string::npos)
        << file << " in " << report;
  }
  EXPECT_EQ(std::count(report.begin(), report.end(), '\n'), isRoot ? 7 : 6) << report;
  EXPECT_EQ(report.find("secret"), std::string::npos);
}

TEST_F(EntitlementDatabaseTest, ResolvesTheLinksInThePathsOfPrograms) {
  for (const char* name : {"bin/plain", "bin/gone", "bin/target", "bin/sub/below"}) program(name);
  std::filesystem::remove(prefix / "bin/gone");
  std::filesystem::create_symlink("bin", prefix / "linked");
  std::filesystem::create_symlink("sub/../target", prefix / "bin/link");
  const std::tuple<const char*, const char*> rows[] = {
      {"bin/plain", "bin/plain"},
      {"linked/plain", "bin/plain"},
      {"bin/gone", "bin/gone"},
      {"linked/new/missing", "bin/new/missing"},
      {"bin/link", "bin/target"},
      {"linked/link", "bin/target"},
      {"bin/sub/../plain", "bin/plain"},
      {"linked/sub/../link", "bin/target"},
      {"bin/sub/..", "bin"},
      {"none/../bin/plain", "bin/plain"},
  };
  for (const auto& [named, meant] : rows) {
    writeFile(files / "a.plist", grant("bin/plain", "<true/>"));
    writeFile(files / "b.plist", grant(named, "<integer>2</integer>"));
    const EntitlementTable table = EntitlementDatabase::tableFor(prefix, {});
    const auto found = table.entitlementsOf(prefix / meant);
    ASSERT_NE(found, nullptr) << named;
    EXPECT_EQ(found->at("card"), PropertyList(2)) << named;
  }
}

TEST_F(EntitlementDatabaseTest, TrustsNoFileAndEntitlesNoProgramThatOthersCanReplace) {
  const auto a = program("bin/a");
  writeFile(files / "a.plist", grant(a, "<true/>"));
  for (const char* directory : {"share", "share/quenlet", "share/quenlet/entitlements"}) {
    ASSERT_EQ(::chmod((prefix / directory).c_str(), 0775), 0);
    EXPECT_EQ(card(EntitlementDatabase(prefix), a), std::nullopt) << directory;
    ASSERT_EQ(::chmod((prefix / directory).c_str(), 0755), 0);
  }
  const EntitlementDatabase database(prefix);
  const std::tuple<const char*, std::filesystem::path, mode_t> rows[] = {
      {"its group writes it", a, 0775},
      {"others write it", a, 0757},
      {"its group writes the directory", prefix / "bin", 0775},
      {"others write the directory", prefix / "bin", 0757},
  };
  testing::internal::CaptureStderr();
  for (const auto& [name, path, mode] : rows) {
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    EXPECT_EQ(card(database, a), std::nullopt) << name;
    ASSERT_EQ(::chmod(path.c_str(), 0755), 0);
  }
  EXPECT_EQ(card(database, a), PropertyList(true));
  writeFile(prefix / "sub/share/quenlet/entitlements/a.plist", grant("bin/a", "<true/>"));
  const auto below = program("sub/bin/a");
  writeFile(configured / "a.plist", grant(below, "<true/>"));
  ASSERT_EQ(::chmod(prefix.c_str(), 0777), 0);
  EXPECT_EQ(card(EntitlementDatabase(prefix / "sub"), below), PropertyList(true))
      << "what lies above the prefix is not looked at";
  EXPECT_EQ(card(EntitlementDatabase(prefix / "none", configuration), below), std::nullopt)
      << "that program is below no prefix";
  ASSERT_EQ(::chmod(prefix.c_str(), 0755), 0);
  if (::chown(a.c_str(), 4711, 4711) == 0) {
    EXPECT_EQ(card(database, a), std::nullopt) << "it is another user's";
  }
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::MatchesRegex("[^\n]*bin/a are ignored: [^\n]*bin/a: its group[^\n]*\n"
                                    "[^\n]*sub/bin/a are ignored: [^\n]*\n"))
      << "once each";
}

TEST_F(EntitlementDatabaseTest, ReadsAnewWhenADirectoryChangesAndLetsTheConfigurationCountMore) {
  const auto a = program("bin/a");
  writeFile(files / "a.plist", grant("bin/a", "<integer>1</integer>"));
  EntitlementDatabase database(prefix, configuration);
  EventLoop loop;
  const auto watch = database.reloadOnChanges(loop);
  const auto turn = [&] {
    loop.post([&] { loop.post([&] { loop.stop(); }); });
    loop.run();
    return card(database, a);
  };
  EXPECT_EQ(turn(), PropertyList(1));
  const auto held = database.entitlementsOf(a);
  writeFile(files / "b.plist", grant("bin/a", "<integer>2</integer>"));
  EXPECT_EQ(turn(), PropertyList(2));
  EXPECT_EQ(*findEntry(*held, "card"), PropertyList(1)) << "who has them keeps them";
  EXPECT_FALSE(std::filesystem::exists(configuration)) << "it is not ours to make";
  std::filesystem::create_directories(configured);
  EXPECT_EQ(turn(), PropertyList(2));
  writeFile(configured / "0.plist", grant("bin/a", "<integer>3</integer>"));
  EXPECT_EQ(turn(), PropertyList(3));
  ASSERT_EQ(::chmod((configured / "0.plist").c_str(), 0666), 0);
  EXPECT_EQ(turn(), PropertyList(2)) << "a change of mode is one, too";
  std::filesystem::remove_all(configuration);
  EXPECT_EQ(turn(), PropertyList(2));
  watch->cancel();
  std::filesystem::remove(files / "b.plist");
  EXPECT_EQ(turn(), PropertyList(2));
  database.reload();
  EXPECT_EQ(turn(), PropertyList(1));
}

}  // namespace
}  // namespace quenlet
