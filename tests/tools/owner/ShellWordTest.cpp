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
  };
  for (const auto& [text, word] : rows) EXPECT_EQ(shellWord(text), word);
}

}  // namespace
}  // namespace quenlet
