#include "foreign/KeyFile.h"

#include <gtest/gtest.h>

namespace quenlet {
namespace {

TEST(KeyFileTest, ReadsGroupsEscapesFlagsAndLists) {
  const Result<KeyFile> parsed = KeyFile::parse(
      "first=1\r\n# a=comment\n;b=comment\n\n [One][$i] \nKey[$e] = "
      "a\\sb\\tc\\nd\\re\\\\f\\,g\\;h\\xC3"
      "\\xABi\\q\\\nKey[de]=other\nBad=\\xFF\\xG0\nList=one; t\\;wo ;;\\xFF;three\n[Two]\nKey=x\n"
      "[One]\nOn=TRUE\nAlso=1\nOff=False\nNot=0\nKey[]=kept\n");
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
    ASSERT_FALSE(file.ok()) << text;
    EXPECT_EQ(file.error()->debugDescription(), expected);
  }
}

}  // namespace
}  // namespace quenlet
