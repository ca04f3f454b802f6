#include "platform/foundation/Date.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

namespace quenlet {
namespace {

TEST(DateTest, ReadsAndWritesISO8601) {
  const std::pair<const char*, double> good[] = {{"1970-01-01T00:00:00Z", 0},
                                                 {"2024-02-29T23:59:59Z", 1709251199},
                                                 {"0001-01-01T00:00:00Z", -62135596800},
                                                 {"4001-01-01T00:00:00Z", 64092211200}};
  for (const auto& [text, seconds] : good) {
    EXPECT_EQ(Date::fromISO8601(text), Date(seconds)) << text;
    EXPECT_EQ(Date(seconds).iso8601(), text);
  }
  EXPECT_EQ(Date::fromISO8601("1969-12-31T23:59:59.5Z"), Date(-0.5));
  EXPECT_EQ(Date(-0.25).iso8601(), "1969-12-31T23:59:59Z");
  EXPECT_EQ(Date(HUGE_VAL).iso8601(), "9999-12-31T23:59:59Z");
  EXPECT_EQ(Date(std::nan("")).iso8601(), "0001-01-01T00:00:00Z");
  for (const char* bad :
       {"", "2026-05-01", "2026-05-01T12:00:00", "2026-05-01T12:00:00Z ", "2026-5-1T12:00:00Z",
        "2026-05-01T12:00:00.Z", "2026-05-01T12:00:00+00:00", "2023-02-29T00:00:00Z",
        "2026-13-01T00:00:00Z", "2026-01-01T24:00:00Z", "0000-01-01T00:00:00Z"}) {
    EXPECT_EQ(Date::fromISO8601(bad), std::nullopt) << bad;
  }
}

}  // namespace
}  // namespace quenlet
