#include "foreign/OutsideCommand.h"

#include <gtest/gtest.h>

namespace quenlet {
namespace {

TEST(OutsideCommandTest, RunsFromTheRootAndEndsWhatDoesNotEnd) {
  EXPECT_EQ(endOf({"sh", "-c", "pwd; exit 3"}, std::chrono::seconds(30)).value().output, "/");
  EXPECT_EQ(endOf({"sh", "-c", "exit 3"}, std::chrono::seconds(30)).value().status, 3);
  EXPECT_FALSE(endOf({"sh", "-c", "exec >&-; sleep 60"}, std::chrono::milliseconds(200)));
  EXPECT_FALSE(endOf({"no-such-program"}, std::chrono::seconds(30)));
}

}  // namespace
}  // namespace quenlet
