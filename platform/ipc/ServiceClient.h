#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "platform/foundation/Either.h"
#include "platform/foundation/Mutex.h"
#include "platform/ipc/ServiceInterface.h"
#include "platform/scheduling/FileDescriptor.h"

namespace quenlet {

class ClientChannel;

// A client's connection to a named service of the same user. Thread-safe. When it breaks, every
// request under way and every later one ends in the connectionBroken error, or in the one that the
// service gave for ending it. Connecting and each reply have a time limit: what the service has not
// done by then ends in the timedOut error, though it may still do it; a reply that comes later is
// dropped. A service that does not even take a request by then is disconnected.
//
// A client that only calls synchronously has no thread: the caller writes and reads itself. The
// first call() starts the client's own thread.
class ServiceClient final {
 public:
  // The encoded, validated reply values, or the error.
  using Completion = std::function<void(Result<std::string> reply)>;

  static constexpr std::chrono::seconds standardTimeLimit{25};

  // Connects; noService when nobody listens.
  [[nodiscard]] static Result<std::shared_ptr<ServiceClient>> connect(
      const std::string& serviceName, ServiceInterface interface,
      std::chrono::milliseconds timeLimit = standardTimeLimit);
  // Speaks to whoever holds the other end of a connected, blocking stream socket.
  [[nodiscard]] static std::shared_ptr<ServiceClient> withConnectedSocket(
      FileDescriptor socket, ServiceInterface interface,
      std::chrono::milliseconds timeLimit = standardTimeLimit);
  // Breaks the connection; what is under way ends in connectionBroken before this returns, unless
  // it is called by a completion.
  ~ServiceClient();
  ServiceClient(const ServiceClient&) = delete;
  ServiceClient& operator=(const ServiceClient&) = delete;

  // Sends a request and returns as soon as the socket has taken it; `completion` is called once, on
  // the client's own thread; when that cannot be started, with the reason on this one.
  void call(const std::string& selector, std::string encodedArguments, Completion completion)
      EXCLUDES(mutex);
  // Sends a request and waits for its reply on the calling thread. A completion may call this.
  [[nodiscard]] Result<std::string> callSynchronously(const std::string& selector,
                                                      std::string encodedArguments);

  // Whether a request made now could only fail: the service is gone or has ended the connection.
  [[nodiscard]] bool isBroken() const;

 private:
  explicit ServiceClient(std::shared_ptr<ClientChannel> connectedChannel);

  const std::shared_ptr<ClientChannel> channel;
  Mutex mutex;
  std::thread thread GUARDED_BY(mutex);
};

}  // namespace quenlet
