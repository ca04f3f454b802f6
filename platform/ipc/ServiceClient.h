#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Mutex.h"
#include "platform/ipc/ServiceInterface.h"
#include "platform/ipc/TimeLimit.h"
#include "quenlet/Result.h"

namespace quenlet {

class ClientChannel;

// A client's connection to a named service of the same user. Thread-safe. When it breaks, pending
// and later requests fail with connectionBroken, or with the error that the service gave for ending
// it. Connecting and each request have a time limit, after which they fail with timedOut; the
// service may still perform the request, but its late reply is dropped. If a request could not be
// written in full by then, the connection breaks.
//
// A client that only calls synchronously needs no thread: its callers write and read. The first
// call() starts a thread.
class ServiceClient final {
 public:
  // The encoded, validated reply values, or the error.
  using Completion = std::function<void(Result<std::string> reply)>;

  static constexpr std::chrono::milliseconds standardTimeLimit{25'000};

  // The noService error when nobody listens.
  [[nodiscard]] static Result<std::shared_ptr<ServiceClient>> connect(
      const std::string& serviceName, ServiceInterface interface,
      Patience patience = standardTimeLimit);
  // Talks over a connected, blocking stream socket, without a look at the peer.
  [[nodiscard]] static std::shared_ptr<ServiceClient> withConnectedSocket(
      FileDescriptor socket, ServiceInterface interface, Patience patience = standardTimeLimit);
  // Breaks the connection. Pending requests fail with connectionBroken before this returns, except
  // when a completion destroys the client.
  ~ServiceClient();
  ServiceClient(const ServiceClient&) = delete;
  ServiceClient& operator=(const ServiceClient&) = delete;

  // Sends a request and returns once the socket has taken it. `completion` is called once, on the
  // client's thread; if that cannot be started, on the calling thread with the error.
  void call(const std::string& selector, std::string encodedArguments, Completion completion)
      EXCLUDES(mutex);
  // Sends a request and waits for the reply on the calling thread. Completions may call this.
  [[nodiscard]] Result<std::string> callSynchronously(const std::string& selector,
                                                      std::string encodedArguments);

  // Whether every further request would fail: the service is gone or has ended the connection.
  [[nodiscard]] bool isBroken() const;

 private:
  explicit ServiceClient(std::shared_ptr<ClientChannel> connectedChannel);

  const std::shared_ptr<ClientChannel> channel;
  Mutex mutex;
  std::thread thread GUARDED_BY(mutex);
};

}  // namespace quenlet
