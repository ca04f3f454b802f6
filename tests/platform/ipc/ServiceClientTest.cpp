#include "platform/ipc/ServiceClient.h"

#include <poll.h>

#include <future>

#include "platform/ipc/HandlerLoop.h"
#include "tests/platform/ipc/EchoService.h"
#include "tests/platform/ipc/RawPeer.h"

namespace quenlet {
namespace {

using namespace std::string_literals;

std::string text(std::string_view of) { return std::move(WireEncoder().string(of)).take(); }

std::string outcome(const Result<std::string>& reply) {
  if (!reply.ok()) return "!" + std::to_string(reply.error()->code());
  return std::string(*WireReader(reply.value()).string());
}

// The service's socket has a path longer than a socket's address can be.
class ServiceClientTest : public EchoTest {
 protected:
  ServiceClientTest() : EchoTest(std::string(120, 'd')) {
    serve();
    client = ServiceClient::connect("test.echo", EchoService::interface()).value();
  }
  std::string call(const std::string& selector, const std::string& content) {
    return outcome(client->callAndWait(selector, text(content)));
  }
  std::future<std::string> callLater(const std::string& selector, const std::string& content) {
    auto promise = std::make_shared<std::promise<std::string>>();
    client->call(
        selector, text(content),
        [promise](const Result<std::string>& reply) { promise->set_value(outcome(reply)); },
        handlers.loop());
    return promise->get_future();
  }

  // A client of a service that says what the test likes.
  RawPeer connectToPeer(Patience limit = ServiceClient::standardTimeLimit) {
    auto [ours, theirs] = connectedPair();
    client = ServiceClient::withConnectedSocket(std::move(ours), EchoService::interface(), limit);
    return RawPeer(std::move(theirs));
  }

  HandlerLoop handlers{HandlerLoop::Thread::own};
  std::shared_ptr<ServiceClient> client;
};

TEST_F(ServiceClientTest, GetsRepliesOfManyThreadsInAnyOrder) {
  constexpr int each = 200;
  std::vector<std::jthread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back([this] {
      for (int n = 0; n < 2 * each; ++n) service->answerOne();
    });
    threads.emplace_back([this, i] {
      for (int n = 0; n < 2 * each; ++n) {
        const std::string content = std::to_string(i) + "/" + std::to_string(n);
        EXPECT_EQ(call(n % 2 == 0 ? "later" : "echo", content), content);
      }
    });
  }
  std::vector<std::future<std::string>> replies;
  for (int n = 0; n < 2 * each; ++n) replies.push_back(callLater("later", std::to_string(n)));
  for (int n = 0; n < 2 * each; ++n) EXPECT_EQ(replies[n].get(), std::to_string(n));
}

// The loop gives way to a thread that reads, and takes over again.
TEST_F(ServiceClientTest, GetsALateReplyAfterAnotherCallHasWaited) {
  for (int n = 0; n < 50; ++n) {
    std::future<std::string> late = callLater("later", "a");
    EXPECT_EQ(call("echo", "b"), "b");
    service->answerOne();
    ASSERT_EQ(late.get(), "a");
  }
}

TEST_F(ServiceClientTest, MovesLargeMessagesBothWaysAtOnceAndRefusesTooLargeOnes) {
  const std::string large(1'500'000, 'x');
  std::vector<std::future<std::string>> replies;
  for (int n = 0; n < 3; ++n) replies.push_back(callLater("echo", large));
  EXPECT_EQ(call("echo", large), large);
  for (auto& reply : replies) EXPECT_EQ(reply.get(), large);
  EXPECT_EQ(call("echo", std::string(32 << 20, 'x')), "!6");
}

TEST_F(ServiceClientTest, CompletionsMayCallAndLetTheClientGo) {
  std::promise<std::string> nested;
  client->call(
      "echo", text("a"),
      [&nested, held = client](const Result<std::string>&) mutable {
        const std::string reply = outcome(held->callAndWait("echo", text("b")));
        held.reset();
        nested.set_value(reply);
      },
      handlers.loop());
  client.reset();
  EXPECT_EQ(nested.get_future().get(), "b");
}

TEST_F(ServiceClientTest, TrustsNothingThatAServiceSays) {
  const auto frame = RawPeer::frame;
  WireEncoder error;
  ErrorWire::encode(error, makeError("other", 42));
  // What a call comes to, and one after it: "!2" when the peer has ended by then.
  const std::tuple<const char*, std::string, const char*, const char*> rows[] = {
      {"failure", frame(FrameKind::failure, 1, error.bytes()), "!42", "!2"},
      {"in parts", "\xc\0\0\0\3\1\0\0\0\0\0\0\0\5\2h\xa\0\0\0\1\1\0\0\0\0\0\0\0i"s, "hi", "!2"},
      {"failure after a part",
       frame(FrameKind::partOfReply, 1, "\5\2h") + frame(FrameKind::failure, 1, error.bytes()),
       "!42", "!2"},
      {"unasked part", frame(FrameKind::partOfReply, 9, "\5\1x"), "!5", "!5"},
      {"failure of all", frame(FrameKind::failure, 0, error.bytes()), "!42", "!42"},
      {"wrong type", frame(FrameKind::reply, 1, "\6\1x"), "!4", "!2"},
      {"broken text", frame(FrameKind::reply, 1, "\5\1\xff"), "!5", "!2"},
      {"failure of unknown class", frame(FrameKind::failure, 1, "\x9\3Bad\0"s), "!4", "!2"},
      {"failure of nothing", frame(FrameKind::failure, 1, "\0"s), "!4", "!2"},
      {"unasked reply", frame(FrameKind::reply, 9, "\5\1x"), "!5", "!5"},
      {"request", frame(FrameKind::request, 1, "\5\1x"), "!5", "!5"},
      {"huge", "\xff\xff\xff\xff\1\1\0\0\0\0\0\0\0"s, "!6", "!6"},
      {"half a reply", frame(FrameKind::reply, 1, "\5\1x").substr(0, 14), "!2", "!2"},
  };
  for (const auto& [name, answer, first, second] : rows) {
    ASSERT_TRUE(connectToPeer().send(answer));
    EXPECT_EQ(call("echo", "x"), first) << name;
    EXPECT_EQ(call("echo", "x"), second) << name;
    EXPECT_EQ(callLater("echo", "x").get(), second) << name;
  }
}

TEST_F(ServiceClientTest, WaitsNoLongerThanItsTimeLimitAndDropsWhatComesLater) {
  const Patience patience{std::chrono::milliseconds(20), std::chrono::milliseconds(60)};
  const RawPeer silent = connectToPeer(patience);
  std::future<std::string> asynchronous = callLater("echo", "1");
  EXPECT_EQ(call("echo", "2"), "!11") << "while the other one reads";
  EXPECT_EQ(asynchronous.get(), "!11");
  // Nothing is read between calls that wait, so the answer to the last may lie there before it.
  RawPeer peer = connectToPeer(patience);
  for (const char* const argument : {"1", "2"}) EXPECT_EQ(call("echo", argument), "!11");
  const auto sentence = [this] {
    return client->callAndWait("echo", text("x")).error()->debugDescription();
  };
  EXPECT_EQ(sentence(), "the service did not answer within 0.02 seconds");
  ASSERT_TRUE(peer.send(RawPeer::frame(FrameKind::partOfReply, 3, "\5")));
  for (const std::uint64_t identifier : {3, 1, 2, 4}) {
    ASSERT_TRUE(
        peer.send(RawPeer::frame(FrameKind::reply, identifier, text(std::to_string(identifier)))));
  }
  EXPECT_EQ(call("echo", "4"), "4");
  EXPECT_EQ(sentence(), "the service did not answer within 0.06 seconds");
  ASSERT_TRUE(peer.send(RawPeer::frame(FrameKind::reply, 1, text("again"))));
  EXPECT_EQ(call("echo", "5"), "!5") << "dropped once only";
}

// A service that stopped before it took all of a request, and one that accepts nobody any more.
TEST_F(ServiceClientTest, GivesAServiceUpThatTakesNothing) {
  constexpr std::chrono::milliseconds limit(20);
  const RawPeer silent = connectToPeer(limit);
  EXPECT_EQ(call("echo", std::string(4 << 20, 'x')), "!11");
  EXPECT_TRUE(client->isBroken());

  const auto address = ServiceAddress::forService("test.deaf").value();
  const FileDescriptor listening(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  ASSERT_EQ(address.bind(listening.get()) + ::listen(listening.get(), 0), 0);
  const auto connect = [&] {
    return ServiceClient::connect("test.deaf", EchoService::interface(), limit);
  };
  const auto waiting = connect();
  EXPECT_TRUE(waiting.ok());
  EXPECT_EQ(connect().error()->code(), 11);
}

}  // namespace
}  // namespace quenlet
