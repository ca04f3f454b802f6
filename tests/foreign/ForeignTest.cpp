#include "foreign/ForeignFiles.h"
#include "foreign/KeyFile.h"
#include "foreign/Mailbox.h"
#include "foreign/OutsideCommand.h"
#include "tests/support/GoldenFile.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

TEST(ForeignFilesTest, TakesInRegularFilesOfABoundedSizeOnly) {
  const TemporaryDirectory directory;
  directory.write("plain", "text\n");
  directory.write("no text", "\xFF\n");
  directory.write("large", std::string(ForeignFiles::mostBytes + 1, '\n'));
  std::filesystem::create_symlink("plain", directory / "link");
  ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);
  const std::pair<const char*, const char*> rows[] = {
      {"plain", "text\n"},
      {"gone", "nothing"},
      {"plain/below", "nothing"},
      {"no text", "!it is not UTF-8"},
      {"large", "!it is larger than 4 MiB"},
      {"link", "!it is a link"},
      {"pipe", "!it is not a regular file"},
      {".", "!it is not a regular file"},
  };
  for (const auto& [name, expected] : rows) {
    const auto text = ForeignFiles::readLines(directory / name);
    EXPECT_EQ(text.ok() ? text.value().value_or("nothing") : "!" + text.error()->debugDescription(),
              expected)
        << name;
  }
}

TEST(KeyFileTest, ReadsGroupsEscapesFlagsAndLists) {
  const auto parsed = KeyFile::parse("first=1\r\n" + goldenFile("tests/foreign/sample.conf"));
  ASSERT_TRUE(parsed.ok());
  const KeyFile& file = parsed.value();
  EXPECT_EQ(file.groups(), std::vector<std::string>({"", "One", "Two"}));
  EXPECT_EQ(file.text("", "first"), "1");
  EXPECT_EQ(file.text("One", "Key"), "a b\tc\nd\re\\f,g;h\u00EBi\\q\\");
  EXPECT_EQ(file.text("One", "Bad"), std::nullopt);
  EXPECT_EQ(file.text("Two", "Key"), "x");
  EXPECT_EQ(file.text("Two", "None"), std::nullopt);
  EXPECT_EQ(file.list("One", "List", ';'), std::vector<std::string>({"one", "t;wo", "three"}));
  const auto flags = [&](const char* key) {
    return std::pair(file.isTrue("One", key), file.isFalse("One", key));
  };
  for (const char* key : {"On", "Also"}) EXPECT_EQ(flags(key), std::pair(true, false)) << key;
  for (const char* key : {"Off", "Not"}) EXPECT_EQ(flags(key), std::pair(false, true)) << key;
  for (const char* key : {"Key", "None"}) EXPECT_EQ(flags(key), std::pair(false, false)) << key;
}

TEST(KeyFileTest, RefusesLinesOfOtherForms) {
  const std::pair<const char*, const char*> rows[] = {
      {"[One]\nword\n", "line 2 has no \"=\""},
      {"\n[One\n", "line 2 begins a group and does not end it"},
      {"[", "line 1 begins a group and does not end it"},
  };
  for (const auto& [text, expected] : rows) {
    const auto file = KeyFile::parse(text);
    EXPECT_EQ(file.ok() ? "" : file.error()->debugDescription(), expected) << text;
  }
}

TEST(MailboxTest, TellsTheOwnersAddressesAndNamesFromOthers) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"ann@example.org", "ann@example.org", "none"},
      {" Ann Berg <ann@example.org> ", "ann@example.org", "Ann|Berg"},
      {"\"Berg, Ann\" <ann@example.org>", "ann@example.org", "Ann|Berg"},
      {"b@example.org <ann@example.org>", "ann@example.org", "none"},
      {"Ann Berg", "none", "Ann|Berg"},
      {"Ann", "none", "none"},
      {"Ann Berg <>", "none", "Ann|Berg"},
      {"ann@localhost", "none", "none"},
      {"ann@example.org berg@example.org", "none", "none"},
      {"ann+shop@example.org", "none", "none"},
      {"No-Reply@example.org", "none", "none"},
      {"1+ann@users.noreply.example.org", "none", "none"},
      {"Ann\x1B[2J Berg", "none", "none"},
      {"Ann \u202EBerg", "none", "none"},
  };
  for (const auto& [text, address, expected] : rows) {
    const auto found = fullName(text);
    EXPECT_EQ(personalAddress(text).value_or("none"), address) << text;
    EXPECT_EQ(found ? *found->givenName + "|" + *found->familyName : "none", expected) << text;
  }
  EXPECT_EQ(fullName("Dr. Ann Mary \"Annie\" Berg Jr."),
            std::optional(Name{"Dr.", "Ann", "Mary", "Berg", "Jr.", "Annie"}));
  EXPECT_EQ(splitMailboxes(R"(a, "b, \"c" <d,e>, (f, (g), h) i,, )"),
            std::vector<std::string>({"a", R"("b, \"c" <d,e>)", "(f, (g), h) i"}));
}

TEST(OutsideCommandTest, RunsFromTheRootAndEndsWhatDoesNotEnd) {
  EXPECT_EQ(endOf({"sh", "-c", "pwd; exit 3"}, std::chrono::seconds(30)).value().output, "/");
  EXPECT_EQ(endOf({"sh", "-c", "exit 3"}, std::chrono::seconds(30)).value().status, 3);
  EXPECT_FALSE(endOf({"sh", "-c", "exec >&-; sleep 60"}, std::chrono::milliseconds(200)));
  EXPECT_FALSE(endOf({"no-such-program"}, std::chrono::seconds(30)));
}

}  // namespace
}  // namespace quenlet
