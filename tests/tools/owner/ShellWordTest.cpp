#include "tools/owner/ShellWord.h"

#include <gtest/gtest.h>

namespace quenlet {
namespace {

TEST(ShellWordTest, ShellsReadAWordBackAsItWas) {
  const std::tuple<const char*, const char*> rows[] = {
      {"com.example.mail:4/a+b%20", "com.example.mail:4/a+b%20"},
      {"", "''"},
      {"a b", "'a b'"},
      {"it's $HOME", "'it'\\''s $HOME'"},
      {"\u00e4", "'\u00e4'"},
      {"=ls", "'=ls'"},
      {"a\nb", "'a\nb'"},
      {"-x y", "-- '-x y'"},
  };
  for (const auto& [text, word] : rows) EXPECT_EQ(shellOperand(text), word);
}

}  // namespace
}  // namespace quenlet
