// Readers that take nothing of what the agent sends them.

#include <sys/socket.h>
#include <sys/stat.h>

#include <algorithm>

#include "platform/notifications/NotificationDirectory.h"
#include "platform/notifications/SocketNotificationCenter.h"
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

TEST_F(DeafReadersTest, DeafReceiversOfNotificationsCostADonationNothing) {
  constexpr int receivers = 1'200;
  startSilentAgent();
  const auto directory =
      NotificationDirectory::open(temporary / "quenlet/notifications").takeLeft();
  std::vector<FileDescriptor> deaf;
  for (int number = 0; number < receivers; ++number) {
    const std::string name = "deaf-" + std::to_string(number);
    deaf.push_back(directory.bindSocket(name).takeLeft());
    const FileDescriptor socket = directory.connectSocket(name).takeLeft();
    while (::send(socket.get(), "x", 1, MSG_DONTWAIT) > 0) {
    }
  }
  const std::size_t before = agent->openDescriptors();
  CorvelProxy client;
  std::vector<double> donations;
  for (int number = 0; number < 50; ++number) {
    donations.push_back(millisecondsFor(
        [&] { EXPECT_EQ(donateTo(client, {email(std::to_string(number) + "@x")}), nullptr); }));
  }
  std::sort(donations.begin(), donations.end());
  RecordProperty("microseconds a donation, median", static_cast<int>(donations[25] * 1'000));
  RecordProperty("microseconds a donation, longest", static_cast<int>(donations[49] * 1'000));
  EXPECT_LE(agent->openDescriptors(), before + SocketNotificationCenter::maximumBacklogs + 8);
  EXPECT_EQ(stopAgent(), 0);
}

}  // namespace
}  // namespace quenlet
