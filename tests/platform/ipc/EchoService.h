#pragma once

#include <deque>

#include "platform/foundation/Mutex.h"
#include "platform/ipc/UnixServiceListener.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlet {

// A service with three operations that take a text: "echo" answers with it during the call, "later"
// when the test says so, "drop" not at all. Accepts everybody, also as the listener's delegate.
class EchoService final : public ExportedObject,
                          public ServiceListenerDelegate,
                          public std::enable_shared_from_this<EchoService> {
 public:
  static ServiceInterface interface() {
    const std::vector<WireParameter> text{{WireType::string, false, {}}};
    ServiceInterface interface;
    for (const char* selector : {"echo", "later", "drop"}) {
      interface.addOperation(selector, text, text);
    }
    return interface;
  }

  bool shouldAcceptNewConnection(ServiceListener&,
                                 const std::shared_ptr<ServiceConnection>& connection) override {
    connection->setExportedInterface(interface());
    connection->setExportedObject(shared_from_this());
    connection->resume();
    return true;
  }

  void perform(const std::string& selector, WireReader arguments, WireReply reply) override {
    std::string values(arguments.skip());
    if (selector == "echo") return reply(std::move(values));
    if (selector == "drop") return;
    MutexLock lock(mutex);
    waiting.emplace_back(std::move(reply), std::move(values));
    mostWaiting = std::max(mostWaiting, waiting.size());
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

  std::size_t mostWaitingAtOnce() {
    MutexLock lock(mutex);
    return mostWaiting;
  }

 private:
  Mutex mutex;
  ConditionVariable changed;
  std::deque<std::pair<WireReply, std::string>> waiting GUARDED_BY(mutex);
  std::size_t mostWaiting GUARDED_BY(mutex) = 0;
};

class EchoTest : public testing::Test {
 protected:
  explicit EchoTest(const std::string& runtimeName = "run") : directory(runtime / runtimeName) {
    ::setenv("XDG_RUNTIME_DIR", directory.c_str(), 1);
  }
  void serve(ServiceLimits limits = {}, RequestAdmission::Begin begin = nullptr) {
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
