#include "donors/mail/PreferenceScript.h"

#include <gtest/gtest.h>

namespace quenlet {
namespace {

TEST(PreferenceScriptTest, ReadsLinesOfOneFormAndRunsNothing) {
  const std::pair<const char*, const char*> rows[] = {
      {R"(user_pref("a", "text");)", "text"},
      {R"(  user_pref ( 'a' , 'it\'s' ) ; // remark)", "it's"},
      {R"(user_pref("a", "\"\\\n\x41\u00eb\ud83d\ude00");)", "\"\\\nA\u00EB\U0001F600"},
      {"user_pref(\"a\", \"text\");\r", "text"},
      {R"(user_pref("a", "1"); user_pref("a", "2");)", "1"},
      {R"(user_pref("a", 7);)", "none"},
      {R"(user_pref("a", true);)", "none"},
      {R"(// user_pref("a", "text");)", "none"},
      {R"(pref("a", "text");)", "none"},
      {R"(user_pref("a", "te" + "xt");)", "none"},
      {R"(user_pref("a", "text)", "none"},
      {R"(user_pref("a", "\ud83d");)", "none"},
      {R"(user_pref("a", "\u0000");)", "none"},
      {R"(user_pref("a", "\q");)", "none"},
      {R"(user_pref("a", "\)", "none"},
      {R"(user_pref("a", "\u00)", "none"},
  };
  for (const auto& [line, value] : rows) {
    EXPECT_EQ(PreferenceScript::parse(line).text("a").value_or("none"), value) << line;
  }
  const auto script = PreferenceScript::parse(
      "user_pref(\"a.b\", 1);\nsomething else\nuser_pref(\"a.c\", false);\nuser_pref(\"a.\", 1);\n"
      "user_pref(\"ab\", 1);\nuser_pref(\"b\", \"1\");\nuser_pref(\"b\", \"2\");\n");
  EXPECT_EQ(script.namesBelow("a."), std::vector<std::string>({"a.b", "a.c"}));
  EXPECT_EQ(script.text("b"), "2") << "the last one counts";
}

}  // namespace
}  // namespace quenlet
