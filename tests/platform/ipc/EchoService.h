#pragma once

#include "platform/ipc/UnixServiceListener.h"
#include "platform/ipc/WireEncoder.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {

// A service with operations that take a text: "echo" answers with it during the call, "hold" as
// well, but not before release(), "later" when the test says so, "drop" not at all. Accepts
// everybody, also as the listener's delegate.
class EchoService final : public ExportedObject,
                          public ServiceListenerDelegate,
                          public std::enable_shared_from_this<EchoService> {
 public:
  static ServiceInterface interface() {
    const std::vector<WireParameter> text{{WireType::string, false, {}}};
    ServiceInterface interface;
    for (const char* selector : {"echo", "hold", "later", "drop", "long"}) {
      interface.addOperation(selector, text, text);
    }
    return interface.expectLongReplies("long");
  }

  bool shouldAcceptNewConnection(ServiceListener&,
                                 const std::shared_ptr<ServiceConnection>& connection) override {
    if (refusesPeers) connection->setPeerTreatment(PeerTreatment::refused);
    connection->setExportedInterface(interface());
    connection->setExportedObject(shared_from_this());
    connection->resume();
    return true;
  }

  void perform(const std::string& selector, WireReader arguments, WireReply reply) override {
    const std::string_view text = WireReader(arguments).string().value_or("");
    std::string values(arguments.skip());
    {
      MutexLock lock(mutex);
      performed += text;
    }
    if (selector == "hold") {
      held.release();
      released.acquire();
    }
    if (selector == "echo" || selector == "hold") return reply(std::move(values));
    if (selector == "drop") return;
    if (selector == "long") return reply(std::make_shared<const Pieces>(*this, text));
    MutexLock lock(mutex);
    waiting.emplace_back(std::move(reply), std::move(values));
    changed.notifyAll();
  }

  // Answers the oldest request for "later", once there is one.
  void answerOne() {
    std::pair<WireReply, std::string> next;
    {
      MutexLock lock(mutex);
      while (waiting.empty()) changed.wait(mutex);
      next = std::move(waiting.front());
      waiting.pop_front();
    }
    next.first(std::move(next.second));
  }

  void waitForRequests(std::size_t count) {
    MutexLock lock(mutex);
    while (waiting.size() < count) changed.wait(mutex);
  }

  void waitUntilHeld() { held.acquire(); }
  void release() { released.release(); }

  // Treats every later connection as refused.
  std::atomic<bool> refusesPeers = false;
  // The number of pieces of a long reply, each holding the request's text, and how many were made.
  std::atomic<std::size_t> pieces = 3;
  std::atomic<std::size_t> piecesMade = 0;
  // The texts of all requests, in order.
  std::string takePerformed() {
    MutexLock lock(mutex);
    return std::exchange(performed, {});
  }
  // Whether somebody wants the answer to the oldest request for "later".
  bool isOneWanted() {
    MutexLock lock(mutex);
    return waiting.front().first.isWanted();
  }

 private:
  // One text in pieces, the first of which has the text's head as well.
  class Pieces final : public EncodedReply {
   public:
    Pieces(EchoService& owner, std::string_view text)
        : service(owner), count(owner.pieces), other(std::make_shared<const std::string>(text)) {
      std::string whole = WireEncoder().string(std::string(count * text.size(), 'x')).bytes();
      whole.resize(whole.size() - count * text.size());
      first = std::make_shared<const std::string>(whole.append(text));
    }
    std::size_t sizeInBytes() const override { return first->size() + (count - 1) * other->size(); }
    std::size_t pieceCount() const override { return count; }
    std::shared_ptr<const std::string> piece(std::size_t index) const override {
      ++service.piecesMade;
      return index == 0 ? first : other;
    }

   private:
    EchoService& service;
    const std::size_t count;
    std::shared_ptr<const std::string> first, other;
  };

  std::binary_semaphore held{0};
  std::binary_semaphore released{0};
  Mutex mutex;
  ConditionVariable changed;
  std::deque<std::pair<WireReply, std::string>> waiting GUARDED_BY(mutex);
  std::string performed GUARDED_BY(mutex);
};

class EchoTest : public testing::Test {
 protected:
  explicit EchoTest(const std::string& runtimeName = "run") : directory(runtime / runtimeName) {
    ::setenv("XDG_RUNTIME_DIR", directory.c_str(), 1);
  }
  void serve(ServiceLimits limits = {}, RequestAdmission::Begin begin = nullptr) {
    listener.reset();
    listener =
        std::make_unique<UnixServiceListener>("test.echo", nullptr, limits, std::move(begin));
    listener->setDelegate(service);
    ASSERT_EQ(listener->resume(), nullptr);
  }

  TemporaryDirectory runtime;
  const std::filesystem::path directory;
  const std::shared_ptr<EchoService> service = std::make_shared<EchoService>();
  std::unique_ptr<UnixServiceListener> listener;
};

}  // namespace quenlet
