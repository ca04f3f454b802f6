// Texts that nobody writes and that would cost the square of their size.

#include <gtest/gtest.h>

#include <chrono>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

TEST(HostileTextTest, ManyCombiningMarksAreComparedAtOnce) {
  std::string text = "a";
  while (text.size() < (std::size_t{128} << 10)) text += "\u0301\u0323";
  const auto begun = std::chrono::steady_clock::now();
  EXPECT_FALSE(canonicallyEqual(text, text + "\u0301"));
  const auto passed = std::chrono::steady_clock::now() - begun;
  EXPECT_LT(passed, std::chrono::milliseconds(10));
  RecordProperty(
      "us for 128 KiB of combining marks",
      static_cast<int>(std::chrono::duration_cast<std::chrono::microseconds>(passed).count()));
}

}  // namespace
}  // namespace quenlet
