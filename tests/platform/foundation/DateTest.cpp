#include "platform/foundation/Date.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>

namespace quenlet {
namespace {

TEST(DateTest, ReadsISO8601) {
  const struct {
    const char* text;
    double seconds;
  } good[] = {
      {"1970-01-01T00:00:00Z", 0},
      {"2026-05-01T12:00:00Z", 1777636800},
      {"2024-02-29T23:59:59Z", 1709251199},
      {"1969-12-31T23:59:59.5Z", -0.5},
      {"0001-01-01T00:00:00Z", -62135596800},
      {"4001-01-01T00:00:00Z", 64092211200},
  };
  for (const auto& [text, seconds] : good)
    EXPECT_EQ(Date::fromISO8601(text), Date(seconds)) << text;
  for (const char* text :
       {"", "2026-05-01", "2026-05-01T12:00:00", "2026-05-01T12:00:00Z ", " 2026-05-01T12:00:00Z",
        "2026-5-1T12:00:00Z", "2026-05-01T12:00:00.Z", "2026-05-01T12:00:00+00:00",
        "2026-05-01t12:00:00z", "2023-02-29T00:00:00Z", "2026-13-01T00:00:00Z",
        "2026-00-01T00:00:00Z", "2026-01-01T24:00:00Z", "2026-01-01T00:60:00Z",
        "2026-01-01T00:00:60Z", "0000-01-01T00:00:00Z", "-001-01-01T00:00:00Z"}) {
    EXPECT_EQ(Date::fromISO8601(text), std::nullopt) << text;
  }
}

TEST(DateTest, WritesWholeSecondsWithinItsYears) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(Date(1777636800.999).iso8601(), "2026-05-01T12:00:00Z");
  EXPECT_EQ(Date(-0.25).iso8601(), "1969-12-31T23:59:59Z");
  EXPECT_EQ(Date::distantFuture().iso8601(), "4001-01-01T00:00:00Z");
  EXPECT_EQ(Date(infinity).iso8601(), "9999-12-31T23:59:59Z");
  EXPECT_EQ(Date(-infinity).iso8601(), "0001-01-01T00:00:00Z");
  EXPECT_EQ(Date(std::numeric_limits<double>::quiet_NaN()).iso8601(), "0001-01-01T00:00:00Z");
}

}  // namespace
}  // namespace quenlet
