// A reader of the log that takes nothing of what the agent writes.

#include <sys/stat.h>

#include "tests/trust/TrustTest.h"

namespace quenlet {
namespace {

using DeafReadersTest = TrustTest;

TEST_F(DeafReadersTest, StoppedReaderOfTheLogHoldsUpNeitherRequestsNorTheEnd) {
  const std::filesystem::path pipe = temporary / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const FileDescriptor reader(::open(pipe.c_str(), O_RDWR | O_CLOEXEC));
  startAgent({"/bin/sh", "-c", "exec \"$0\" >\"$1\" 2>&1", bin / "quenlet-agent", pipe});
  CorvelProxy client;
  for (int i = count(10'000, 100'000); i > 0; --i) ASSERT_EQ(fetch(client), nullptr);
  agent->signal(SIGHUP);
  EXPECT_EQ(donateTo(client, DonationValues(5'000, email("a@x"))), nullptr);
  const auto begun = std::chrono::steady_clock::now();
  EXPECT_EQ(stopAgent(), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(5));
}

}  // namespace
}  // namespace quenlet
