// More of what clients do than they ever do. ThreadSanitizer's reports end the agent.

#include "platform/ipc/HandlerLoop.h"
#include "tests/trust/TrustTest.h"

namespace quenlet {
namespace {

// All that a client can ask for, by number, with arguments that depend on another number.
constexpr std::size_t numberOfOperations = 10;
void ask(CorvelProtocol& agent, std::size_t operation, std::size_t number,
         const ErrorReply& replied) {
  const std::string name = "name" + std::to_string(number);
  const DonationOrigin origin = from(name, name, name);
  const auto account = std::make_shared<Account>(
      Account{.identifier = name, .username = name + "@example.org", .isActive = true});
  const SuccessReply success = [replied](bool, const auto& error) { replied(error); };
  const auto value = [replied](const auto&, const auto& error) { replied(error); };
  if (operation == 0) {
    agent.donateMeCardValues({email(name + "@example.org", origin), phone("+49 30 1234567"),
                              named({.givenName = name}, from("app", "n", name)),
                              postal({.street = name, .city = "Ulm"}), image(name)},
                             replied);
  }
  if (operation == 1) agent.removeDonatedMeCardValuesForIdentifiers({name, "tel"}, success);
  if (operation == 2) agent.removeDonatedMeCardValuesWithBundleIdentifier(name, success);
  if (operation == 3) agent.fetchDonatedMeCard(value);
  if (operation == 4) agent.meCardDonations(value);
  const auto former = number % 2 == 0 ? account : nullptr;
  if (operation == 5) agent.changeFromAccount(former, account, replied);
  if (operation == 6) agent.rejectValueWithDonationIdentifier(name, replied);
  if (operation == 7) agent.rejectValuesWithClusterIdentifier(name, replied);
  if (operation == 8) agent.removeAllRejectionsWithCompletionHandler(replied);
  if (operation == 9) {
    agent.synchronousDonatedMeCard(
        [replied](const Result<ContactPtr>& card) { replied(card.ok() ? nullptr : card.error()); });
  }
}

class HeavyUseTest : public TrustTest {
 protected:
  static void askAtRandom(unsigned threadSeed) {
    std::mt19937 randomHere{threadSeed};
    std::atomic<int> replies = 0;
    const ErrorReply replied = [&replies](const ErrorPtr& error) {
      EXPECT_TRUE(!error || error->code() == 1) << error->description();
      ++replies;
    };
    const HandlerLoop handlers(HandlerLoop::Thread::own);
    CorvelProxy client(std::make_shared<AgentConnection>(), handlers.loop());
    const int requests = count(5'000, 100'000);
    for (int i = 0; i < requests; ++i) {
      ask(client, randomHere() % numberOfOperations, randomHere() % 8, replied);
    }
    EXPECT_TRUE(eventually([&] { return replies == requests; })) << replies;
  }
  // Half of what it donates takes the place of what the batch before it donated.
  static void donateBatch(CorvelProtocol& client, int number, int size) {
    DonationValues values;
    for (int i = 0; i < size; ++i) {
      const std::string id = std::to_string((number * size / 2 + i) % (4 * size));
      const DonationOrigin origin = from("bundle" + std::to_string(number % 3), id);
      const std::string text = std::to_string(number) + ":" + id;
      values.push_back(i % 2 == 0 ? email(text + "@example.org", origin)
                                  : postal({.street = text, .city = "Ulm"}, origin));
    }
    ASSERT_EQ(donateTo(client, values), nullptr);
  }
};

TEST_F(HeavyUseTest, StormLeavesOnTheDiskWhatIsHeld) {
  startAgent();
  std::vector<std::thread> clients;
  for (unsigned i = 0; i < 6; ++i) clients.emplace_back(&askAtRandom, seed + i);
  for (int i = 0; i < count(60, 1'000); ++i) {
    EXPECT_EQ(quenlet(i % 2 == 0 ? "disable --yes" : "enable").code, 0);
    writeOwnersCard(cardText("Anna Berg", {"EMAIL:" + std::to_string(i) + "@example.org"}));
  }
  for (std::thread& client : clients) client.join();
  ASSERT_TRUE(eventually([this] { return quenlet("card").code == 0; })) << agent->err();
  donate("app", "Anna Berg", {"EMAIL:last@example.org"});
  const std::string held = quenlet("list").out;
  EXPECT_EQ(stopAgent(), 0) << agent->err();
  RecordProperty("operations", 6 * count(5'000, 100'000));
  EXPECT_EQ(agent->err().find("ThreadSanitizer"), std::string::npos) << agent->err();
  startAgent();
  EXPECT_EQ(quenlet("list").out, held);
}

TEST_F(HeavyUseTest, StoppedReaderOfTheLogHoldsUpNeitherRequestsNorTheEnd) {
  const std::filesystem::path pipe = temporary / "pipe";
  ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
  const FileDescriptor reader(::open(pipe.c_str(), O_RDWR | O_CLOEXEC));
  startAgent({"/bin/sh", "-c", "exec \"$0\" >\"$1\" 2>&1", bin / "quenlet-agent", pipe});
  for (int i = count(10'000, 100'000); i > 0; --i) ASSERT_EQ(fetch(client), nullptr);
  agent->signal(SIGHUP);
  EXPECT_EQ(donateTo(client, DonationValues(5'000, email("a@x"))), nullptr);
  const auto begun = std::chrono::steady_clock::now();
  EXPECT_EQ(stopAgent(), 0);
  const std::chrono::duration<double> ending = std::chrono::steady_clock::now() - begun;
  RecordProperty("milliseconds from SIGTERM to the end", static_cast<int>(ending.count() * 1000));
  EXPECT_LT(ending.count(), 5);
}

TEST_F(HeavyUseTest, SoakTakesNoMoreMemoryInTheEndThanOnceWarm) {
  const int size = count(250, 1'000);
  // Warm after some 15,000: until then threads and their heaps take what they keep.
  const int batches = count(30'000, 1'000'000) / size;
  double warm = 0;
  double end = 0;
  startSilentAgent();
  for (int number = 1; number <= batches; ++number) {
    donateBatch(client, number, size);
    if (number % 10 != 0) continue;
    EXPECT_EQ(quenlet("forget bundle" + std::to_string(number % 3)).code, 0);
    std::this_thread::sleep_for(std::chrono::milliseconds(2500));  // donors are looked for
    end = memoryInMiB();
    if (number <= batches / 2) warm = std::max(warm, end);
  }
  RecordProperty("donations", batches * size);
  RecordProperty("KiB in use at most in the first half", static_cast<int>(warm * 1024));
  RecordProperty("KiB in use in the end", static_cast<int>(end * 1024));
  // What is freed and kept differs by a few dozen pages from run to run. A leak of 26 bytes a
  // donation is more than this already in the short form.
  const double keptForLater = 0.25;
  EXPECT_LE(end, warm * 1.03 + keptForLater);
}

}  // namespace
}  // namespace quenlet
