#include "donors/mail/PreferenceScript.h"

#include <gtest/gtest.h>

namespace quenlet {
namespace {

TEST(PreferenceScriptTest, ReadsLinesOfOneFormAndRunsNothing) {
  const std::pair<const char*, const char*> rows[] = {
      {R"(user_pref("a", "text");)", "text"},
      {R"(  user_pref ( 'a' , 'it\'s' ) ; // remark)", "it's"},
      {R"(user_pref("a", "\"\\\r\n\x41\u00eb\ud83d\ude00");)", "\"\\\r\nA\u00EB\U0001F600"},
      {"user_pref(\"a\", \"text\");\r", "text"},
      {R"(user_pref("a", "1"); user_pref("a", "2");)", "1"},
      {R"(user_pref("a", 7);)", "none"},
      {R"(user_pref("a", true);)", "none"},
      {R"(// user_pref("a", "text");)", "none"},
      {R"(pref("a", "text");)", "none"},
      {R"(user_pref("a", "te" + "xt");)", "!"},
      {R"(user_pref("a", "text)", "!"},
      {R"(user_pref("a", "text"))", "!"},
      {R"(user_pref("a")", "!"},
      {R"(user_pref)", "!"},
      {R"(user_pref("a", 7)", "!"},
      {R"(user_pref("a", "\ud83d");)", "!"},
      {R"(user_pref("a", "\u0000");)", "!"},
      {R"(user_pref("a", "\q");)", "!"},
      {R"(user_pref("a", "\)", "!"},
      {R"(user_pref("a", "\u00)", "!"},
  };
  for (const auto& [line, value] : rows) {
    const auto script = PreferenceScript::parse(line);
    EXPECT_EQ(script.ok() ? script.value().text("a").value_or("none") : "!", value) << line;
  }
  EXPECT_EQ(PreferenceScript::parse("// one\nuser_pref(\"a\", 1\n").error()->debugDescription(),
            "line 2 begins a preference and is not one");
  const PreferenceScript script =
      PreferenceScript::parse(
          "user_pref(\"a.b\", 1);\nsomething else\nuser_pref(\"a.c\", false);\nuser_pref(\"a.\", "
          "1);\n"
          "user_pref(\"ab\", 1);\nuser_pref(\"b\", \"1\");\nuser_pref(\"b\", \"2\");\n")
          .takeValue();
  EXPECT_EQ(script.namesBelow("a."), std::vector<std::string>({"a.b", "a.c"}));
  EXPECT_EQ(script.text("b"), "2") << "the last one counts";
}

}  // namespace
}  // namespace quenlet
