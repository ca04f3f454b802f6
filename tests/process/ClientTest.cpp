#include "tests/process/ProcessTest.h"

namespace quenlet {
namespace {

class ClientTest : public ProcessTest {
 protected:
  // The words, with a standard output that nobody reads.
  Ran unread(const std::string& words) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(::pipe(ends), 0);
    ::close(ends[0]);
    const std::string command = "exec \"$0\" " + words + " >&" + std::to_string(ends[1]);
    Ran ran = run({"/bin/sh", "-c", command, bin / "quenlet"});
    ::close(ends[1]);
    return ran;
  }
};

TEST_F(ClientTest, EndsWhenNobodyReadsIt) {
  EXPECT_EQ(unread("status").code, -SIGPIPE);
  const Ran watch = unread("watch");
  EXPECT_EQ(watch.code, 1);
  EXPECT_EQ(watch.err, "quenlet: posix-error 5: write to standard output: Input/output error\n");
  const Ran left = run({"/bin/sh", "-c", R"({ "$0" watch; echo "ended with $?" >&2; } | head -n 1)",
                        bin / "quenlet"});
  EXPECT_EQ(left.out, "watching…\n");
  EXPECT_EQ(left.err, "ended with 0\n");
}

}  // namespace
}  // namespace quenlet
