#include "platform/ipc/UnixServiceListener.h"

#include <gmock/gmock.h>
#include <sys/resource.h>

#include "platform/scheduling/attachedDescriptors.h"
#include "tests/platform/ipc/EchoService.h"
#include "tests/platform/ipc/RawPeer.h"
#include "tests/platform/ipc/SystemCalls.h"

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

  std::string echo(RawPeer& peer, std::uint64_t identifier, std::string_view text) {
    return send(peer, RawPeer::request(identifier, "echo", text));
  }
  // One that has been accepted.
  RawPeer connect() {
    RawPeer peer(socket);
    EXPECT_EQ(echo(peer, 1, "a"), "1 a");
    return peer;
  }

  const std::filesystem::path socket = directory / "quenlet" / "test.echo";
};

TEST_F(UnixServiceListenerTest, GoesOnAfterAWrongRequestAndEndsAfterASenselessHeader) {
  serve();
  const auto request = [](const std::string& body) {
    return RawPeer::frame(FrameKind::request, 7, body);
  };
  const auto ofLength = [](std::size_t length) {
    return RawPeer::request(7, "echo", std::string(length - 9 - 6 - 3, 'x'));
  };
  const std::string seven = "\7\0\0\0\0\0\0\0"s;
  // The last column is of peers that are refused, of whose arguments nothing is looked at.
  const std::tuple<const char*, std::string, const char*, const char*, bool> rows[] = {
      {"invalid UTF-8", request("\5\4echo\5\1\xff"), "7 !5", "8 b", false},
      {"no operation", request(""), "7 !5", "8 b", false},
      {"dropped without an answer", request("\5\4drop\5\2hi"), "7 !9", "8 b", false},
      {"too large by one", "\1\0\0\2\0"s + seven, "7 !6", "end", false},
      {"as large as can be said", "\xff\xff\xff\xff\0"s + seven, "7 !6", "end", false},
      {"shorter than its header", "\x8\0\0\0\0"s + seven, "7 !5", "end", false},
      {"no identifier", RawPeer::request(0, "echo", "x"), "0 !5", "end", false},
      {"a reply", "\x9\0\0\0\1"s + seven, "7 !5", "end", false},
      {"senseless arguments", request("\5\4echo\xff"), "7 ", "8 ", true},
      {"unknown operation, refused", request("\5\3owl"), "7 !3", "8 ", true},
      {"as large as may be", ofLength(4096), "7 ", "8 ", true},
      {"larger by one", ofLength(4097), "7 ", "end", true},
      {"larger, its operation unknown yet", ofLength(4097).substr(0, 15), "7 !6", "end", true},
  };
  for (const auto& [name, bytes, answer, next, isRefused] : rows) {
    service->refusesPeers = isRefused;
    RawPeer peer(socket);
    EXPECT_EQ(send(peer, RawPeer::request(1, "echo", "a") + bytes), isRefused ? "1 " : "1 a");
    EXPECT_EQ(peer.receive(), answer) << name;
    peer.send(RawPeer::request(8, "echo", "b"));
    EXPECT_EQ(peer.receive(), next) << name;
    EXPECT_EQ(service->takePerformed().empty(), isRefused) << name;
  }
}

TEST_F(UnixServiceListenerTest, DoesNotReadBeyondTheUnansweredLimit) {
  serve({.unansweredRequests = 4});
  RawPeer peer(socket);
  for (std::uint64_t i = 1; i <= 20; ++i) ASSERT_TRUE(peer.send(RawPeer::request(i, "later", "x")));
  service->waitForRequests(4);
  std::size_t performed = 0;
  for (std::uint64_t i = 1; i <= 20; ++i) {
    service->answerOne();
    EXPECT_EQ(peer.receive(), std::to_string(i) + " x");
    performed += service->takePerformed().size();
    EXPECT_LE(performed, i + 4);
  }
  for (std::uint64_t i = 1; i <= 4; ++i) ASSERT_TRUE(peer.send(RawPeer::request(i, "later", "x")));
  service->waitForRequests(4);
  const std::string large = RawPeer::request(5, "echo", std::string(4'000'000, 'y'));
  RawPeer other = connect();
  std::size_t sent = 0;
  for (int i = 0; i < 50; ++i) {
    sent += peer.sendAtOnce(std::string_view(large).substr(sent));
    EXPECT_EQ(echo(other, 2, "o"), "2 o");
  }
  EXPECT_LT(sent, 1'000'000U) << "more than the socket holds";
}

TEST_F(UnixServiceListenerTest, OutlivesPeersThatVanishWithRequestsOpen) {
  serve();
  RawPeer peer(socket);
  ASSERT_TRUE(peer.send(RawPeer::request(1, "later", "x") + RawPeer::request(2, "later", "y") +
                        RawPeer::request(3, "echo", "cut").substr(0, 15)));
  service->waitForRequests(2);
  service->answerOne();
  EXPECT_EQ(peer.receive(), "1 x");
  EXPECT_TRUE(service->isOneWanted());
  peer.close();
  RawPeer other = connect();
  EXPECT_EQ(echo(other, 3, "now"), "3 now");
  EXPECT_FALSE(service->isOneWanted()) << "its work can be spared";
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
    return std::make_shared<ProcessTransaction>(std::make_shared<CancelBlock>([&open] {
      --open;
      open.notify_all();
    }));
  });
  RawPeer idle = connect();
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
  EXPECT_EQ(service->takePerformed().size(), 2'000'001U);
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

TEST_F(UnixServiceListenerTest, EndsRefusedPeersThenTheOldestUnfinishedOnesWhenAllHoldTooMuch) {
  serve({.heldBytes = 600'000});
  RawPeer modest = connect();
  // Each takes 24 KiB, the donation 264 KiB.
  const std::string donation = RawPeer::request(5, "echo", std::string(240'000, 'd'));
  RawPeer donor = connect();
  ASSERT_TRUE(donor.send(std::string_view(donation).substr(0, 200'000)));
  service->refusesPeers = true;
  for (int i = 0; i < 40; ++i) RawPeer(socket).send(donation.substr(0, 100));
  std::vector<RawPeer> refused;
  for (int i = 0; i < 40; ++i) refused.emplace_back(socket).send("\1");
  RawPeer last(socket);
  EXPECT_EQ(echo(last, 1, "l"), "1 ");
  service->refusesPeers = false;
  EXPECT_EQ(send(donor, std::string_view(donation).substr(200'000)).size(), 240'002U);
  refused.clear();

  RawPeer older(socket);
  EXPECT_EQ(send(older, RawPeer::request(6, "echo", "o") + donation.substr(0, 100'000)), "6 o");
  RawPeer younger(socket);
  const std::string larger = RawPeer::request(7, "echo", std::string(400'000, 'y'));
  ASSERT_TRUE(younger.send(larger.substr(0, 399'000)));
  EXPECT_EQ(older.receive(), "end");
  EXPECT_EQ(send(younger, larger.substr(399'000)).size(), 400'002U);
  EXPECT_EQ(echo(modest, 2, "b"), "2 b");
}

TEST_F(UnixServiceListenerTest, GivesEachConnectionItsTurn) {
  serve({.requestsInTurn = 3});
  RawPeer holder(socket);
  std::array<RawPeer, 2> peers{connect(), connect()};
  ASSERT_TRUE(holder.send(RawPeer::request(1, "hold", ":")));
  service->waitUntilHeld();
  for (std::size_t i = 0; i < 8; ++i) {
    ASSERT_TRUE(peers[0].send(RawPeer::request(2, "echo", "a")));
    ASSERT_TRUE(peers[1].send(RawPeer::request(2, "echo", "b")));
  }
  service->release();
  EXPECT_EQ(holder.receive(), "1 :");
  for (int i = 0; i < 8; ++i) EXPECT_EQ(peers[0].receive() + peers[1].receive(), "2 a2 b");
  listener.reset();
  EXPECT_THAT(service->takePerformed(),
              testing::AnyOf("aa:aaabbbaaabbbaabb", "aa:bbbaaabbbaaabbaa"));
}

TEST_F(UnixServiceListenerTest, SaysALongReplyInOneMessageOrInParts) {
  serve({.messageSizeInBytes = 40});
  RawPeer peer(socket);
  const std::string nine = "123456789";
  EXPECT_EQ(send(peer, RawPeer::request(1, "long", nine)), "1 " + nine + nine + nine);
  EXPECT_EQ(send(peer, RawPeer::request(2, "long", nine + "a") + RawPeer::request(3, "echo", "b")),
            "2 +\5\x1e" + nine + "a");
  EXPECT_EQ(peer.receive(), "2 +" + nine + "a");
  EXPECT_EQ(peer.receive(), "2 -" + nine + "a");
  EXPECT_EQ(peer.receive(), "3 b");
  // Each piece is larger than a message may be.
  service->pieces = 2;
  serve({.messageSizeInBytes = 25});
  RawPeer small(socket);
  EXPECT_EQ(send(small, RawPeer::request(4, "long", "12345678")),
            "4 +\5\x10"
            "12345678");
  EXPECT_EQ(small.receive(), "4 -12345678");
}

TEST_F(UnixServiceListenerTest, KeepsFewLongRepliesUnderWayAndLittleOfThemInMemory) {
  service->pieces = 300;
  serve({.heldBytes = 8 << 20});
  std::vector<RawPeer> slow;
  for (int i = 0; i < 10; ++i) {
    slow.emplace_back(socket).send(RawPeer::request(1, "long", std::string(20'000, 's')));
  }
  RawPeer many(socket);
  for (int i = 0; i < 5; ++i) many.send(RawPeer::request(1, "long", std::string(20'000, 'm')));
  RawPeer other(socket);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(echo(other, 2, "o"), "2 o");
  const std::string performed = service->takePerformed();
  EXPECT_LE(std::count(performed.begin(), performed.end(), 'm'), 2 * 20'000);
  EXPECT_LT(service->piecesMade, 11U * 60) << "of replies that nobody reads";
  for (RawPeer& peer : slow) EXPECT_EQ(peer.receive().size(), 6'000'002U);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(many.receive().size(), 6'000'002U);
}

TEST_F(UnixServiceListenerTest, PerformsALargeRequestBesideTheOthersAndInItsTurn) {
  serve({.quickRequestBytes = 100});
  RawPeer peer(socket);
  const std::string large(200, 'x');
  ASSERT_TRUE(peer.send(RawPeer::request(1, "echo", "1") + RawPeer::request(2, "hold", large) +
                        RawPeer::request(3, "echo", "3")));
  service->waitUntilHeld();
  connect();
  EXPECT_EQ(service->takePerformed(), "1" + large + "a");
  // Ends before its large request has its turn.
  RawPeer(socket).send(RawPeer::request(5, "echo", std::string(300, 'y')));
  service->release();
  for (const auto& answer : {"1 1"s, "2 " + large, "3 3"s}) EXPECT_EQ(peer.receive(), answer);
}

TEST_F(UnixServiceListenerTest, AnswersAWrongRequestThatWaitedForAWorkerWhileItWasSuspended) {
  serve({.quickRequestBytes = 100});
  std::array<RawPeer, 2> holders{RawPeer(socket), RawPeer(socket)};
  for (RawPeer& holder : holders) {
    ASSERT_TRUE(holder.send(RawPeer::request(1, "hold", std::string(200, 'h'))));
    service->waitUntilHeld();
  }
  RawPeer wrong(socket);
  ASSERT_TRUE(wrong.send(RawPeer::request(2, "owl", std::string(200, 'w'))));
  connect();
  listener->suspend();
  service->release();
  EXPECT_EQ(wrong.receive(), "2 !3");
  service->release();
}

// Its answers would pile up, and take the others' time.
TEST_F(UnixServiceListenerTest, DoesNotReadAPeerThatDoesNotReadUntilItDoes) {
  serve({.requestsInTurn = 3, .heldBytes = 1 << 20});
  RawPeer peer(socket);
  std::thread sender([&peer] {
    for (int i = 0; i < 50; ++i) peer.send(RawPeer::request(1, "echo", std::string(100'000, 'x')));
  });
  RawPeer other(socket);
  for (int i = 0; i < 50; ++i) EXPECT_EQ(echo(other, 3, "x"), "3 x");
  for (int i = 0; i < 50; ++i) EXPECT_EQ(peer.receive().size(), 100'002U);
  sender.join();
}

// The end of what they stand for could hold the service up.
TEST_F(UnixServiceListenerTest, LetsNobodySendDescriptors) {
  const FileDescriptor any(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  int passes = 0;
  socklen_t size = sizeof passes;
  const bool kernelCan = ::getsockopt(any.get(), SOL_SOCKET, SO_PASSRIGHTS, &passes, &size) == 0;
  for (const bool canRefuse : {false, kernelCan}) {
    SystemCalls::hidePassRights = !canRefuse;
    EXPECT_EQ(refuseDescriptors(any.get()), canRefuse);
    serve({.connections = 3});
    RawPeer honest = connect();
    const RawPeer accepted = connect();
    ASSERT_TRUE(honest.send(RawPeer::request(2, "hold", "c")));
    service->waitUntilHeld();
    const RawPeer last(socket);
    RawPeer late(socket);
    std::vector<std::pair<FileDescriptor, FileDescriptor>> lingering;
    for (const RawPeer* peer : {&accepted, &last, &std::as_const(late)}) {
      FileDescriptor& own = lingering.emplace_back(lingeringConnection()).first;
      EXPECT_NE(peer->pass(own.get()), canRefuse);
      if (!canRefuse) own.reset();  // now the receiver has the last word
    }
    service->release();
    EXPECT_EQ(honest.receive(), "2 c");
    EXPECT_EQ(late.receive(), "0 !7") << "what is still being closed counts";
    EXPECT_EQ(echo(honest, 3, "d"), "3 d") << "they hold nobody up";
    listener.reset();
  }
}

TEST_F(UnixServiceListenerTest, ServesItsOwnUserAndRootOnly) {
  serve();
  const int own = static_cast<int>(::geteuid());
  for (const int user : {own, 0}) {
    SystemCalls::peerUser = user;
    RawPeer peer(socket);
    EXPECT_EQ(echo(peer, 1, "a"), "1 a") << user;
  }
  SystemCalls::peerUser = own + 1;
  RawPeer stranger(socket);
  // May be refused before it has sent anything.
  static_cast<void>(stranger.send(RawPeer::request(1, "echo", "a")));
  EXPECT_EQ(stranger.receive(), "end");
  SystemCalls::peerUser = -1;
}

TEST_F(UnixServiceListenerTest, AcceptsAgainSoonAfterTheSystemWasShort) {
  serve();
  std::vector<RawPeer> peers;
  peers.push_back(connect());
  for (const int failure : {ENFILE, ENOMEM}) {
    SystemCalls::acceptFailure = failure;
    SystemCalls::failingAccepts = 2;
    const auto begun = std::chrono::steady_clock::now();
    // The end of one would let another in.
    peers.push_back(connect());
    EXPECT_GE(std::chrono::steady_clock::now() - begun, std::chrono::milliseconds(200))
        << failure << " without a pause";
  }
}

TEST(ServiceLimitsTest, KeepSixtyFourDescriptorsBack) {
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  for (const auto& [descriptors, connections] :
       {std::pair(1088, 1024), std::pair(1087, 1023), std::pair(70, 6), std::pair(64, 1)}) {
    const rlimit limit{static_cast<rlim_t>(descriptors), before.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
    EXPECT_EQ(ServiceLimits::forThisProcess().connections, connections) << descriptors;
  }
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
}

TEST_F(UnixServiceListenerTest, RefusesInsteadOfSpinningWithoutDescriptors) {
#ifdef __has_feature
#if __has_feature(address_sanitizer)
  GTEST_SKIP() << "UndefinedBehaviorSanitizer opens a pipe to look at an object's type";
#endif
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
  EXPECT_EQ(peer.receive(), "end");
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  connect();
}

TEST_F(UnixServiceListenerTest, HoldsItsNameAloneAndReplacesWhatACrashLeft) {
  writeFile(socket, "left behind");
  ASSERT_EQ(::chmod(directory.c_str(), 0700), 0);
  ASSERT_EQ(::chmod(socket.parent_path().c_str(), 0700), 0);
  serve();
  EXPECT_EQ(codeOfAnother(), 10);
  connect();
  listener.reset();
  EXPECT_EQ(codeOfAnother(), 0);
  ASSERT_EQ(::chmod(socket.parent_path().c_str(), 0755), 0);
  EXPECT_EQ(codeOfAnother(), EACCES);
}

}  // namespace
}  // namespace quenlet
