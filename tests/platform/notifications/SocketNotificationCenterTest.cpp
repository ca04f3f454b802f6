#include "platform/notifications/SocketNotificationCenter.h"

#include <sys/socket.h>

#include <algorithm>
#include <fstream>
#include <thread>

#include "platform/notifications/NotificationDirectory.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

using Names = std::vector<std::string>;

// Centers stand for processes: each has a socket of its own. All run on the test's thread.
class SocketNotificationCenterTest : public testing::Test {
 protected:
  TemporaryDirectory temporary;
  // Longer than a socket's address can be.
  const std::filesystem::path directory = temporary / std::string(150, 'd') / "notifications";
  EventLoop loop;
  SocketNotificationCenter center{loop, directory};
  Names heard;
  std::vector<std::shared_ptr<Cancelable>> tokens;

  void observe(SocketNotificationCenter& observing, const std::string& name,
               const std::string& heardAs) {
    tokens.push_back(observing.addObserver(name, [this, heardAs] { heard.push_back(heardAs); }));
  }
  // Receivers read in the order of the posts, so that everything posted before has been handled.
  void runUntilHandled(SocketNotificationCenter& receiving) {
    const auto token = receiving.addObserver("end", [this] { loop.stop(); });
    receiving.post("end");
    loop.run();
    token->cancel();
  }

  NotificationDirectory openDirectory() const {
    return NotificationDirectory::open(directory).takeLeft();
  }
};

TEST_F(SocketNotificationCenterTest, ReachesEachObserverOfTheNameInEachProcessButNotWithinPost) {
  auto other = std::make_unique<SocketNotificationCenter>(loop, directory);
  observe(center, "change", "first");
  observe(center, "change", "second");
  observe(center, "something else", "wrong");
  observe(*other, "change", "other");

  other->post("change");
  EXPECT_EQ(heard, Names{});
  runUntilHandled(center);
  runUntilHandled(*other);
  std::sort(heard.begin(), heard.end());
  EXPECT_EQ(heard, (Names{"first", "other", "second"}));
  EXPECT_EQ(openDirectory().socketNames().size(), 2u);
  other.reset();
  EXPECT_EQ(openDirectory().socketNames().size(), 1u);
}

TEST_F(SocketNotificationCenterTest, DoesNotCallAnObserverThatAnEarlierCallbackCancelled) {
  observe(center, "change", "kept");
  tokens.push_back(center.addObserver("change", [this] { tokens[2]->cancel(); }));
  observe(center, "change", "cancelled meanwhile");
  observe(center, "change", "cancelled before");
  tokens[3]->cancel();

  center.post("change");
  center.post("change");
  runUntilHandled(center);
  EXPECT_EQ(heard, (Names{"kept", "kept"}));
}

TEST_F(SocketNotificationCenterTest, IgnoresDatagramsThatAreNoNames) {
  const std::string longest(SocketNotificationCenter::maximumNameSizeInBytes, 'n');
  observe(center, longest, "longest");
  observe(center, "", "empty");
  observe(center, "caf\xe9", "not UTF-8");

  const NotificationDirectory opened = openDirectory();
  const auto socket = opened.connectSocket(opened.socketNames().at(0)).takeLeft();
  for (const std::string& bytes :
       {longest + "n", longest + std::string(9000, 'n'), std::string(), std::string("caf\xe9")}) {
    EXPECT_EQ(::send(socket.get(), bytes.data(), bytes.size(), 0), ssize_t(bytes.size()));
    center.post(bytes);
  }
  runUntilHandled(center);
  EXPECT_EQ(heard, Names{});
  center.post(longest);
  runUntilHandled(center);
  EXPECT_EQ(heard, Names{"longest"});
}

TEST_F(SocketNotificationCenterTest, RemovesSocketsOfProcessesThatAreGoneAndNothingElse) {
  observe(center, "change", "living");
  static_cast<void>(openDirectory().bindSocket("dead"));  // closes the socket, leaves its file
  std::ofstream(directory / "notes") << "kept";

  center.post("change");
  runUntilHandled(center);
  EXPECT_EQ(heard, Names{"living"});
  EXPECT_FALSE(std::filesystem::exists(directory / "dead"));
  EXPECT_TRUE(std::filesystem::exists(directory / "notes"));
}

TEST_F(SocketNotificationCenterTest, LosesNoNameWhenAQueueIsFull) {
  constexpr int posts = 2000;
  SocketNotificationCenter receiver(loop, directory);
  observe(receiver, "often", "often");
  tokens.push_back(receiver.addObserver("last", [this] {
    heard.push_back("last");
    loop.stop();
  }));

  for (int count = 0; count < posts; ++count) center.post("often");
  center.post("last");
  loop.run();
  EXPECT_EQ(std::count(heard.begin(), heard.end(), "last"), 1);
  EXPECT_GT(heard.size(), 1u);
  EXPECT_LT(heard.size(), std::size_t{posts}) << "the queue was never full";

  // Afterwards there is nothing left that would hold back or repeat a notification.
  heard.clear();
  center.post("last");
  loop.run();
  EXPECT_EQ(heard, Names{"last"});
}

TEST_F(SocketNotificationCenterTest, KeepsOutOfADirectoryThatOthersCanEnter) {
  observe(center, "change", "private");
  std::filesystem::permissions(directory, std::filesystem::perms(0755));
  SocketNotificationCenter late(loop, directory);
  testing::internal::CaptureStderr();
  observe(late, "change", "open to others");
  center.post("change");
  EXPECT_NE(testing::internal::GetCapturedStderr().find("not private to the user"),
            std::string::npos);

  std::filesystem::permissions(directory, std::filesystem::perms(0700));
  EXPECT_EQ(openDirectory().socketNames().size(), 1u);
  runUntilHandled(center);
  EXPECT_EQ(heard, Names{});
}

TEST_F(SocketNotificationCenterTest, TakesPostsAndCancellationsFromAnyThread) {
  observe(center, "change", "change");
  int ended = 0;
  std::vector<std::thread> threads;
  for (const std::string name : {"a", "b", "c", "d"}) {
    tokens.push_back(center.addObserver(name, [&] {
      if (++ended == 4) loop.stop();
    }));
    threads.emplace_back([this, name] {
      for (int count = 0; count < 50; ++count) {
        center.addObserver("change", [] {})->cancel();
        center.post("change");
      }
      center.post(name);
    });
  }
  loop.run();
  for (std::thread& thread : threads) thread.join();
  EXPECT_GE(heard.size(), 1u);
}

}  // namespace
}  // namespace quenlet
