#include "platform/ipc/UnixServiceListener.h"

#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "platform/scheduling/refuseDescriptors.h"
#include "tests/platform/ipc/EchoService.h"
#include "tests/platform/ipc/RawPeer.h"

namespace quenlet {
namespace {

using namespace std::string_literals;

class UnixServiceListenerTest : public EchoTest {
 protected:
  static std::int64_t codeOfAnother() {
    const ErrorPtr error = UnixServiceListener("test.echo", nullptr).resume();
    return error ? error->code() : 0;
  }
  std::string send(RawPeer& peer, std::string_view bytes) {
    EXPECT_TRUE(peer.send(bytes));
    return peer.receive();
  }

  const std::filesystem::path socket = directory / "quenlet" / "test.echo";
};

TEST_F(UnixServiceListenerTest, GoesOnAfterAWrongRequestAndEndsAfterASenselessHeader) {
  serve();
  const auto request = [](const std::string& body) {
    return RawPeer::frame(FrameKind::request, 7, body);
  };
  const std::string seven = "\7\0\0\0\0\0\0\0"s;
  const std::tuple<const char*, std::string, const char*, const char*> rows[] = {
      {"unknown operation", request("\5\3owl"), "7 !3", "8 b"},
      {"too few arguments", request("\5\4echo"), "7 !4", "8 b"},
      {"invalid UTF-8", request("\5\4echo\5\1\xff"), "7 !5", "8 b"},
      {"no operation", request(""), "7 !5", "8 b"},
      {"an operation that is no text", request("\6\4echo\5\2hi"), "7 !5", "8 b"},
      {"dropped without an answer", request("\5\4drop\5\2hi"), "7 !9", "8 b"},
      {"too large by one", "\1\0\0\2\0"s + seven, "7 !6", "end"},
      {"as large as can be said", "\xff\xff\xff\xff\0"s + seven, "7 !6", "end"},
      {"shorter than its header", "\x8\0\0\0\0"s + seven, "7 !5", "end"},
      {"no identifier", RawPeer::request(0, "echo", "x"), "0 !5", "end"},
      {"a reply", "\x9\0\0\0\1"s + seven, "7 !5", "end"},
  };
  for (const auto& [name, bytes, answer, next] : rows) {
    RawPeer peer(socket);
    EXPECT_EQ(send(peer, RawPeer::request(1, "echo", "a") + bytes), "1 a") << name;
    EXPECT_EQ(peer.receive(), answer) << name;
    peer.send(RawPeer::request(8, "echo", "b"));
    EXPECT_EQ(peer.receive(), next) << name;
  }
}

TEST_F(UnixServiceListenerTest, DoesNotReadBeyondTheUnansweredLimit) {
  serve({.unansweredRequests = 4});
  RawPeer peer(socket);
  for (std::uint64_t i = 1; i <= 20; ++i) ASSERT_TRUE(peer.send(RawPeer::request(i, "later", "x")));
  service->waitForRequests(4);
  for (std::uint64_t i = 1; i <= 20; ++i) {
    service->answerOne();
    EXPECT_EQ(peer.receive(), std::to_string(i) + " x");
  }
  EXPECT_EQ(service->mostWaitingAtOnce(), 4U);
}

TEST_F(UnixServiceListenerTest, OutlivesPeersThatVanishWithRequestsOpen) {
  serve();
  RawPeer peer(socket);
  ASSERT_TRUE(peer.send(RawPeer::request(1, "later", "x") + RawPeer::request(2, "later", "y") +
                        RawPeer::request(3, "echo", "cut").substr(0, 15)));
  service->waitForRequests(2);
  service->answerOne();
  EXPECT_EQ(peer.receive(), "1 x");
  peer.close();
  RawPeer other(socket);
  EXPECT_EQ(send(other, RawPeer::request(3, "echo", "here")), "3 here");
  service->answerOne();
  ASSERT_TRUE(other.send(RawPeer::request(4, "later", "late")));
  service->waitForRequests(1);
  listener.reset();
  service->answerOne();
  EXPECT_EQ(other.receive(), "end");
}

TEST_F(UnixServiceListenerTest, AnswersWhatItTookAndTakesNothingMoreOnceSuspended) {
  std::atomic<int> open = 0;
  serve({}, [&open] {
    ++open;
    return std::make_shared<ProcessTransaction>("request", std::make_shared<CancelBlock>([&open] {
                                                  --open;
                                                  open.notify_all();
                                                }));
  });
  RawPeer idle(socket);
  EXPECT_EQ(send(idle, RawPeer::request(1, "echo", "a")), "1 a");
  RawPeer peer(socket);
  // More than fits into the socket.
  ASSERT_TRUE(peer.send(RawPeer::request(1, "later", std::string(2'000'000, 'x'))));
  service->waitForRequests(1);
  listener->suspend();
  const RawPeer late(socket);
  ASSERT_TRUE(idle.send(RawPeer::request(2, "later", "b")));
  ASSERT_TRUE(peer.send(RawPeer::request(2, "later", "c")));
  service->answerOne();
  EXPECT_GE(open, 1) << "the answer has not left yet";
  EXPECT_EQ(peer.receive().size(), 2'000'002U);
  while (const int held = open) open.wait(held);
  listener.reset();
  EXPECT_EQ(peer.receive(), "end");
  EXPECT_EQ(idle.receive(), "end");
  EXPECT_EQ(service->mostWaitingAtOnce(), 1U);
}

TEST_F(UnixServiceListenerTest, EndsTheConnectionOfAPeerThatNeverReads) {
  serve({.unsentBytes = 1 << 20});
  RawPeer peer(socket);
  const std::string request = RawPeer::request(1, "later", std::string(100000, 'x'));
  for (int i = 0; i < 20; ++i) ASSERT_TRUE(peer.send(request));
  service->waitForRequests(20);
  for (int i = 0; i < 20; ++i) service->answerOne();
  std::size_t received = 0;
  while (peer.receive() != "end") ++received;
  EXPECT_LT(received, 20U);
}

TEST_F(UnixServiceListenerTest, EndsWhoHoldsTheMostWhenAllHoldTooMuch) {
  serve({.unsentBytesAhead = 1 << 30, .heldBytes = 1 << 20});
  RawPeer modest(socket);
  EXPECT_EQ(send(modest, RawPeer::request(1, "echo", "a")), "1 a");
  for (const auto& [name, bytes] : {
           std::pair("answers not read", RawPeer::request(1, "echo", std::string(200'000, 'x'))),
           std::pair("a message without end", "\0\0\0\1\0"s + std::string(200'000, 'x')),
       }) {
    RawPeer peer(socket);
    int sent = 0;
    while (peer.send(bytes)) ASSERT_LT(++sent, 50) << name;
    EXPECT_GT(sent, 1) << "what is held, and the socket's own buffers, must fit";
  }
  EXPECT_EQ(send(modest, RawPeer::request(2, "echo", "b")), "2 b");
}

// Its answers would pile up, and take the others' time.
TEST_F(UnixServiceListenerTest, DoesNotReadAPeerThatDoesNotReadUntilItDoes) {
  serve({.requestsInTurn = 3, .heldBytes = 1 << 20});
  RawPeer peer(socket);
  std::thread sender([&peer] {
    for (int i = 0; i < 50; ++i) peer.send(RawPeer::request(1, "echo", std::string(100'000, 'x')));
  });
  RawPeer other(socket);
  for (int i = 0; i < 50; ++i) EXPECT_EQ(send(other, RawPeer::request(3, "echo", "x")), "3 x");
  for (int i = 0; i < 50; ++i) EXPECT_EQ(peer.receive().size(), 100'002U);
  sender.join();
}

// The end of what they stand for could hold the service up.
TEST_F(UnixServiceListenerTest, LetsNobodySendDescriptors) {
  serve();
  const RawPeer accepted(socket);
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  const FileDescriptor reading(ends[0]);
  int refuses = 0;
  socklen_t size = sizeof refuses;
  const bool canRefuse = ::getsockopt(FileDescriptor(::socket(AF_UNIX, SOCK_STREAM, 0)).get(),
                                      SOL_SOCKET, SO_PASSRIGHTS, &refuses, &size) == 0;
  EXPECT_EQ(accepted.pass(ends[1]), !canRefuse);
  ::close(ends[1]);
  char byte = 0;
  EXPECT_EQ(::read(reading.get(), &byte, 1), 0) << "where it is taken, it is closed";
}

TEST_F(UnixServiceListenerTest, TellsTheConnectionBeyondTheLimit) {
  serve({.connections = 1});
  RawPeer first(socket);
  EXPECT_EQ(send(first, RawPeer::request(1, "echo", "a")), "1 a");
  RawPeer second(socket);
  EXPECT_EQ(second.receive(), "0 !7");
  EXPECT_EQ(second.receive(), "end");
}

TEST_F(UnixServiceListenerTest, RefusesInsteadOfSpinningWithoutDescriptors) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "UndefinedBehaviorSanitizer opens a pipe to look at an object's type";
#endif
  serve();
  RawPeer peer;
  const int lowestFree = ::dup(0);
  ::close(lowestFree);
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  const rlimit none{static_cast<rlim_t>(lowestFree), before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  peer.connect(socket);
  EXPECT_EQ(peer.receive(), "0 !7");
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  RawPeer other(socket);
  EXPECT_EQ(send(other, RawPeer::request(1, "echo", "a")), "1 a");
}

TEST_F(UnixServiceListenerTest, HoldsItsNameAloneAndReplacesWhatACrashLeft) {
  writeFile(socket, "left behind");
  ASSERT_EQ(::chmod(directory.c_str(), 0700), 0);
  ASSERT_EQ(::chmod(socket.parent_path().c_str(), 0700), 0);
  serve();
  EXPECT_EQ(codeOfAnother(), 10);
  RawPeer peer(socket);
  EXPECT_EQ(send(peer, RawPeer::request(1, "echo", "a")), "1 a");
  listener.reset();
  EXPECT_EQ(codeOfAnother(), 0);
  ASSERT_EQ(::chmod(socket.parent_path().c_str(), 0755), 0);
  EXPECT_EQ(codeOfAnother(), EACCES);
}

}  // namespace
}  // namespace quenlet
