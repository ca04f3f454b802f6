#include "platform/foundation/Text.h"

#include <gtest/gtest.h>

#include <string>

namespace quenlet {
namespace {

TEST(TextTest, EqualityIsCanonicalEquivalence) {
  const std::tuple<std::string, std::string, bool> cases[] = {
      {"Ann", "ann", false},
      {"Zo\u00eb", "Zoe\u0308", true},
      {"a\u0323\u0302", "a\u0302\u0323", true},
      {"a\u0301\u0302", "a\u0302\u0301", false},  // marks of one class keep their order
      {"\uD55C", "\u1112\u1161\u11AB", true},
      {"\u212A", "K", true},
      {"\uFB01", "fi", false},  // compatibility is no equivalence
      {"e\u0308\xFF", "e\u0308\xFF", true},
      {"e\u0308\xFF", "\u00eb\xFF", false},
      {"\xFF", "\uFFFD", false},
  };
  for (const auto& [a, b, equal] : cases) {
    EXPECT_EQ(canonicallyEqual(a, b), equal) << a << " " << b;
    EXPECT_EQ(canonicallyEqual(b, a), equal) << a << " " << b;
    EXPECT_EQ(canonicalKey(a) == canonicalKey(b), equal) << a << " " << b;
  }
}

TEST(TextTest, LowercasesIndependentlyOfTheLocaleAndTrimsBlanks) {
  EXPECT_EQ(lowercased("Ann@EXAMPLE.org [Z`{"), "ann@example.org [z`{");
  EXPECT_EQ(lowercased("\u00c9COLE I \U00010400"), "\u00e9cole i \U00010428");
  EXPECT_EQ(lowercased("\u039F\u03A3 \u03A3"), "\u03BF\u03C2 \u03C3") << "final sigma";
  EXPECT_EQ(lowercased("A\u00c9\xFF"), "A\u00c9\xFF") << "no UTF-8";
  EXPECT_EQ(trimmed(" \t\r\n a b \n"), "a b");
  EXPECT_EQ(trimmed(" \n"), "");
}

TEST(TextTest, PutsTextOnOneLineOfABoundedSize) {
  EXPECT_EQ(onOneLine("a\x1b\n\x7f\u0085\u2028\u2029\xFF\u00e9"), "a       \u00e9");
  EXPECT_EQ(onOneLine("a\u00e9\u00e9", 4), "a\u00e9");
}

TEST(TextTest, TellsValidUTF8) {
  for (const std::string text :
       {"", "plain text of more than eight bytes", "12345678\u00e9", "\U0010FFFF"}) {
    EXPECT_TRUE(isValidUTF8(text)) << text;
  }
  for (const std::string text : {"\x80", "12345678\xFF", "\xC0\x80", "\xE0\x80\x80", "\xED\xA0\x80",
                                 "\xF4\x90\x80\x80", "\xE4\xB8", "\xC3\x28 after"}) {
    EXPECT_FALSE(isValidUTF8(text)) << testing::PrintToString(text);
  }
}

}  // namespace
}  // namespace quenlet
