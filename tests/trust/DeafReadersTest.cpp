// Readers that take nothing of what the agent sends them.

#include <sys/stat.h>

#include "platform/scheduling/FileDescriptor.h"
#include "tests/trust/TrustTest.h"

namespace quenlet {
namespace {

class DeafReadersTest : public TrustTest {
 protected:
  static double millisecondsFor(const std::function<void()>& block) {
    const auto begun = std::chrono::steady_clock::now();
    block();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begun)
        .count();
  }
};

TEST_F(DeafReadersTest, StoppedReaderOfTheLogHoldsUpNeitherRequestsNorTheEnd) {
  const std::filesystem::path pipe = temporary / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const FileDescriptor reader(::open(pipe.c_str(), O_RDWR | O_CLOEXEC));
  agent = start({"/bin/sh", "-c", "exec \"$0\" >\"$1\" 2>&1", bin / "quenlet-agent", pipe});
  ASSERT_TRUE(eventually([this] { return countDonations() >= 0; }));
  CorvelProxy client;
  const int fetches = count(10'000, 100'000);
  const double fetching = millisecondsFor([&] {
    for (int i = 0; i < fetches; ++i) {
      const auto [card, error] = waitForReply<ContactPtr, ErrorPtr>(
          [&](ContactReply reply) { client.fetchDonatedMeCard(std::move(reply)); });
      ASSERT_EQ(error, nullptr);
    }
  });
  agent->signal(SIGHUP);
  EXPECT_EQ(donateTo(client, DonationValues(5'000, email("a@x"))), nullptr);
  RecordProperty("fetches", fetches);
  RecordProperty("microseconds a fetch", static_cast<int>(fetching * 1'000 / fetches));
  const double ending = millisecondsFor([this] { EXPECT_EQ(stopAgent(), 0); });
  RecordProperty("milliseconds from SIGTERM to the end", static_cast<int>(ending));
  EXPECT_LT(ending, 5'000);
}

}  // namespace
}  // namespace quenlet
