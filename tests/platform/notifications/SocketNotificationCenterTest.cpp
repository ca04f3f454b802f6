#include "platform/notifications/SocketNotificationCenter.h"

#include <thread>

#include "platform/notifications/NotificationReceiver.h"
#include "tests/platform/ipc/RawPeer.h"
#include "tests/platform/ipc/SystemCalls.h"
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

  void observe(SocketNotificationCenter& by, const std::string& name, const std::string& as) {
    tokens.push_back(by.addObserver(name, [this, as] { heard.push_back(as); }));
  }
  // Receivers read in the order of one center's posts, so that everything it posted before has been
  // handled. The name sorts behind all others that may wait with it.
  void runUntilHandled(SocketNotificationCenter& receiving, SocketNotificationCenter& posting) {
    const auto token = receiving.addObserver("~end", [this] { loop.stop(); });
    posting.post("~end");
    loop.run();
    token->cancel();
  }
  void runUntilHandled(SocketNotificationCenter& receiving) { runUntilHandled(receiving, center); }

  NotificationDirectory openDirectory() const {
    return NotificationDirectory::open(directory).takeValue();
  }
  // Until what the center was given to post has gone out: to a receiver of its own, last of all.
  void waitUntilSent() {
    EventLoop later;
    SocketNotificationCenter probe(later, directory);
    const auto token = probe.addObserver("sent", [&] { later.stop(); });
    center.post("sent");
    later.run();
  }
  // Sends to a socket until it takes no more; how much it took.
  int fillQueue(const std::string& socketName, const std::string& name) const {
    const FileDescriptor socket = openDirectory().connectSocket(socketName).takeValue();
    int count = 0;
    while (::send(socket.get(), name.data(), name.size(), MSG_DONTWAIT) > 0) ++count;
    return count;
  }
};

TEST_F(SocketNotificationCenterTest, ReachesEachObserverOfTheNameInEachProcessButNotWithinPost) {
  auto other = std::make_unique<SocketNotificationCenter>(loop, directory);
  observe(center, "change", "first");
  observe(center, "change", "second");
  observe(center, "something else", "wrong");
  observe(*other, "change", "other");
  observe(center, "last words", "last");

  other->post("change");
  EXPECT_EQ(heard, Names{});
  runUntilHandled(center, *other);
  runUntilHandled(*other, *other);
  std::sort(heard.begin(), heard.end());
  EXPECT_EQ(heard, (Names{"first", "other", "second"}));
  EXPECT_EQ(openDirectory().socketNames().size(), 2u);
  other->post("last words");
  other->finish();
  EXPECT_EQ(openDirectory().socketNames().size(), 1u);
  runUntilHandled(center);
  EXPECT_EQ(heard.back(), "last") << "what was posted goes out before the end";
}

TEST_F(SocketNotificationCenterTest, DoesNotCallAnObserverThatAnEarlierCallbackCancelled) {
  observe(center, "change", "kept");
  tokens.push_back(center.addObserver("change", [this] { tokens[2]->cancel(); }));
  observe(center, "change", "cancelled meanwhile");
  observe(center, "change", "cancelled before");
  tokens[3]->cancel();

  for (int times = 0; times < 2; ++times) {
    center.post("change");
    runUntilHandled(center);
  }
  EXPECT_EQ(heard, (Names{"kept", "kept"}));
}

TEST_F(SocketNotificationCenterTest, IgnoresDatagramsThatAreNoNames) {
  const std::string longest(NotificationReceiver::maximumNameSizeInBytes, 'n');
  observe(center, longest, "longest");
  observe(center, "", "empty");
  observe(center, "caf\xe9", "not UTF-8");

  const NotificationDirectory opened = openDirectory();
  const auto socket = opened.connectSocket(opened.socketNames().at(0)).takeValue();
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

// Before Linux 6.16, which lets a socket refuse them.
TEST_F(SocketNotificationCenterTest, DescriptorsHoldUpNobodyBesideTheirReceiver) {
  SystemCalls::hidePassRights = true;
  SocketNotificationCenter receiving(loop, directory);
  observe(receiving, "change", "heard");
  SystemCalls::hidePassRights = false;
  auto [own, other] = lingeringConnection();
  const NotificationDirectory opened = openDirectory();
  const RawPeer sender(opened.connectSocket(opened.socketNames().at(0)).takeValue());
  ASSERT_TRUE(sender.pass(own.get()));
  own.reset();
  center.post("change");
  runUntilHandled(center);
  EXPECT_EQ(heard, Names{});
  other.reset();
  runUntilHandled(receiving);
  EXPECT_EQ(heard, Names{"heard"});
}

TEST_F(SocketNotificationCenterTest, RemovesSocketsOfProcessesThatAreGoneAndNothingElse) {
  observe(center, "change", "living");
  static_cast<void>(openDirectory().bindSocket("dead"));  // closes the socket, leaves its file
  writeFile(directory / "notes", "kept");

  center.post("change");
  runUntilHandled(center);
  EXPECT_EQ(heard, Names{"living"});
  EXPECT_FALSE(std::filesystem::exists(directory / "dead"));
  EXPECT_TRUE(std::filesystem::exists(directory / "notes"));
}

TEST_F(SocketNotificationCenterTest, LosesNoNameWhenAQueueIsFull) {
  SocketNotificationCenter receiver(loop, directory);
  for (const char* name : {"often", "once"}) observe(receiver, name, name);
  const int room = fillQueue(openDirectory().socketNames().front(), "often");
  for (const char* name : {"often", "once", "often"}) {
    center.post(name);
    waitUntilSent();
  }
  runUntilHandled(receiver);
  EXPECT_EQ(std::count(heard.begin(), heard.end(), "often"), room + 1) << "waits once a name";
  EXPECT_EQ(std::count(heard.begin(), heard.end(), "once"), 1);

  // Afterwards there is nothing left that would hold back or repeat a notification.
  heard.clear();
  center.post("once");
  runUntilHandled(receiver);
  EXPECT_EQ(heard, Names{"once"});
}

TEST_F(SocketNotificationCenterTest, KeepsBacklogsForSomeReceiversOnly) {
  std::vector<FileDescriptor> deaf;
  for (int number = 0; number < 40; ++number) {
    const std::string name = "deaf" + std::to_string(number);
    deaf.push_back(openDirectory().bindSocket(name).takeValue());
    fillQueue(name, "often");
  }
  center.post("change");
  waitUntilSent();
  const auto takeChanges = [&deaf] {
    int changes = 0;
    char bytes[64];
    for (const FileDescriptor& socket : deaf) {
      for (ssize_t size = 0; (size = ::recv(socket.get(), bytes, sizeof bytes, 0)) > 0;)
        changes += std::string_view(bytes, size_t(size)) == "change";
    }
    return changes;
  };
  EXPECT_EQ(takeChanges(), 0);
  runUntilHandled(center);
  EXPECT_EQ(takeChanges(), 32);
}

TEST_F(SocketNotificationCenterTest, KeepsOutOfADirectoryThatOthersCanEnter) {
  observe(center, "change", "private");
  auto poster = std::make_unique<SocketNotificationCenter>(loop, directory);
  observe(*poster, "change", "its own");
  std::filesystem::permissions(directory, std::filesystem::perms(0755));
  SocketNotificationCenter late(loop, directory);
  testing::internal::CaptureStderr();
  observe(late, "change", "open to others");
  poster->post("change");
  poster.reset();
  EXPECT_NE(testing::internal::GetCapturedStderr().find("not private"), std::string::npos);

  std::filesystem::permissions(directory, std::filesystem::perms(0700));
  EXPECT_EQ(openDirectory().socketNames().size(), 1u);
  runUntilHandled(center);
  EXPECT_EQ(heard, Names{});
}

TEST_F(SocketNotificationCenterTest, TakesPostsAndCancellationsFromAnyThread) {
  constexpr int posts = 50;
  Names expected;
  std::vector<std::thread> threads;
  for (const std::string poster : {"a", "b", "c", "d"}) {
    for (int count = 0; count < posts; ++count) {
      expected.push_back(poster + std::to_string(count));
      tokens.push_back(center.addObserver(expected.back(), [this, name = expected.back()] {
        heard.push_back(name);
        if (heard.size() == std::size_t{4 * posts}) loop.stop();
      }));
    }
    threads.emplace_back([this, poster] {
      for (int count = 0; count < posts; ++count) {
        center.addObserver("change", [] {})->cancel();
        center.post(poster + std::to_string(count));
      }
    });
  }
  loop.run();
  for (std::thread& thread : threads) thread.join();
  std::sort(heard.begin(), heard.end());
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(heard, expected);
}

}  // namespace
}  // namespace quenlet
