#include "platform/ipc/UnixServiceListener.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "platform/ipc/ServiceClient.h"
#include "tests/platform/ipc/EchoService.h"
#include "tests/platform/ipc/RawPeer.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {
namespace {

using namespace std::string_literals;

class UnixServiceListenerTest : public testing::Test {
 protected:
  UnixServiceListenerTest() { ::setenv("XDG_RUNTIME_DIR", runtime.path().c_str(), 1); }

  std::unique_ptr<UnixServiceListener> makeListener(
      ServiceLimits limits = {}, std::shared_ptr<const EntitlementDatabase> entitlements = {}) {
    auto made = std::make_unique<UnixServiceListener>("test.echo", std::move(entitlements), limits);
    made->setDelegate(service);
    return made;
  }
  void serve(ServiceLimits limits = {},
             std::shared_ptr<const EntitlementDatabase> entitlements = {}) {
    listener = makeListener(limits, std::move(entitlements));
    ASSERT_EQ(listener->resume(), nullptr);
  }
  std::string send(RawPeer& peer, std::string_view bytes) {
    EXPECT_TRUE(peer.send(bytes));
    return peer.receive();
  }

  TemporaryDirectory runtime;
  const std::filesystem::path socket = runtime.path() / "quenlet" / "test.echo";
  const std::shared_ptr<EchoService> service = std::make_shared<EchoService>();
  std::unique_ptr<UnixServiceListener> listener;
};

TEST_F(UnixServiceListenerTest, AnswersWrongRequestsAndGoesOn) {
  serve();
  RawPeer peer(socket);
  const auto ask = [&](std::uint64_t identifier, const std::string& body) {
    return send(peer, RawPeer::frame(FrameKind::request, identifier, body));
  };
  const std::string echo = "\5\4echo"s;
  EXPECT_EQ(ask(1, echo + "\5\2hi"), "1 hi");
  EXPECT_EQ(ask(2, "\5\3owl"), "2 !3");
  EXPECT_EQ(ask(3, echo), "3 !4") << "too few arguments";
  EXPECT_EQ(ask(4, echo + "\5\1\xff"), "4 !5") << "no UTF-8";
  EXPECT_EQ(ask(5, echo + std::string(500, '\7')), "5 !4");
  EXPECT_EQ(ask(6, ""), "6 !5") << "no operation";
  EXPECT_EQ(ask(7, "\6\4echo\5\2hi"), "7 !5") << "an operation that is no text";
  EXPECT_EQ(ask(~std::uint64_t{0}, "\5\4drop\5\2hi"), "18446744073709551615 !9");
  EXPECT_EQ(ask(8, echo + "\5\2hi"), "8 hi");
}

TEST_F(UnixServiceListenerTest, EndsTheConnectionAfterAHeaderThatMakesNoSense) {
  serve();
  const std::string identifier = "\7\0\0\0\0\0\0\0"s;
  const struct {
    const char* name;
    std::string bytes;
    std::string answer;
  } rows[] = {
      {"too large", "\1\0\0\2\0"s + identifier, "7 !6"},
      {"as large as can be said", "\xff\xff\xff\xff\0"s + identifier, "7 !6"},
      {"shorter than its header", "\x8\0\0\0\0"s + identifier, "7 !5"},
      {"unknown kind", "\x9\0\0\0\3"s + identifier, "7 !5"},
      {"a reply", "\x9\0\0\0\1"s + identifier, "7 !5"},
  };
  for (const auto& row : rows) {
    RawPeer peer(socket);
    EXPECT_EQ(send(peer, RawPeer::request(1, "echo", "a") + row.bytes), "1 a") << row.name;
    EXPECT_EQ(peer.receive(), row.answer) << row.name;
    EXPECT_EQ(peer.receive(), "end") << row.name;
  }
}

TEST_F(UnixServiceListenerTest, DoesNotReadBeyondTheUnansweredLimit) {
  ServiceLimits limits;
  limits.unansweredRequests = 4;
  serve(limits);
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

TEST_F(UnixServiceListenerTest, EndsTheConnectionOfAPeerThatNeverReads) {
  ServiceLimits limits;
  limits.unsentBytes = 1 << 20;
  serve(limits);
  RawPeer peer(socket);
  const std::string request = RawPeer::request(1, "echo", std::string(100000, 'x'));
  std::size_t sent = 0;
  while (peer.send(request)) ASSERT_LT(++sent, 200U);
  EXPECT_GT(sent, 10U) << "the bound itself must fit";
  RawPeer other(socket);
  EXPECT_EQ(send(other, RawPeer::request(3, "echo", "here")), "3 here");
}

TEST_F(UnixServiceListenerTest, TellsTheConnectionBeyondTheLimit) {
  ServiceLimits limits;
  limits.connections = 1;
  serve(limits);
  RawPeer first(socket);
  EXPECT_EQ(send(first, RawPeer::request(1, "echo", "a")), "1 a");
  RawPeer second(socket);
  EXPECT_EQ(second.receive(), "0 !7");
  EXPECT_EQ(second.receive(), "end");
  const auto client = ServiceClient::connect("test.echo", EchoService::interface());
  ASSERT_TRUE(client.isLeft());
  const auto reply = client.left()->callSynchronously("echo", std::string("\5\1a"));
  ASSERT_FALSE(reply.isLeft());
  EXPECT_EQ(reply.right()->code(), 7);
}

TEST_F(UnixServiceListenerTest, RefusesInsteadOfSpinningWithoutDescriptors) {
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
  std::filesystem::create_directory(socket.parent_path());
  ASSERT_EQ(::chmod(socket.parent_path().c_str(), 0700), 0);
  std::ofstream(socket) << "left behind";
  serve();
  auto second = makeListener();
  const ErrorPtr taken = second->resume();
  ASSERT_NE(taken, nullptr);
  EXPECT_EQ(taken->description(),
            "ovaro.quenlet.service-error 10: another process serves test.echo");
  second.reset();
  RawPeer peer(socket);
  EXPECT_EQ(send(peer, RawPeer::request(1, "echo", "a")), "1 a");
  listener.reset();
  EXPECT_EQ(makeListener()->resume(), nullptr);
  ASSERT_EQ(::chmod(socket.parent_path().c_str(), 0755), 0);
  EXPECT_EQ(makeListener()->resume()->code(), EACCES);
}

TEST_F(UnixServiceListenerTest, ServesPathsLongerThanASocketAddress) {
  const auto deep = runtime.path() / std::string(120, 'd');
  ASSERT_EQ(::mkdir(deep.c_str(), 0700), 0);
  ::setenv("XDG_RUNTIME_DIR", deep.c_str(), 1);
  serve();
  const auto client = ServiceClient::connect("test.echo", EchoService::interface());
  ASSERT_TRUE(client.isLeft());
  EXPECT_EQ(client.left()->callSynchronously("echo", "\5\1a").left(), "\5\1a");
}

TEST_F(UnixServiceListenerTest, KnowsThePeersProcessAndEntitlements) {
  const auto files = runtime.path() / "share/quenlet/entitlements";
  std::filesystem::create_directories(files);
  std::ofstream(files / "a.plist") << "<plist version=\"1.0\"><dict><key>"
                                   << std::filesystem::read_symlink("/proc/self/exe").string()
                                   << "</key><dict><key>card</key><true/></dict></dict></plist>";
  ASSERT_EQ(::chmod((files / "a.plist").c_str(), 0600), 0);
  serve({}, std::make_shared<EntitlementDatabase>(runtime.path()));
  RawPeer peer(socket);
  const auto connection = service->connection();
  EXPECT_EQ(connection->processIdentifier(), ::getpid());
  EXPECT_EQ(connection->valueForEntitlement("card"), PropertyList(true));
  EXPECT_EQ(connection->valueForEntitlement("other"), std::nullopt);
}

}  // namespace
}  // namespace quenlet
