#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/foundation/Either.h"
#include "platform/ipc/ServiceInterface.h"

namespace quenlet {

// A client's connection to a named service of the same user. Thread-safe. When it breaks, every
// request under way and every later one ends in the connectionBroken error.
class ServiceClient final {
 public:
  // The encoded, validated reply values, or the error.
  using Completion = std::function<void(Result<std::string> reply)>;

  // Connects; noService when nobody listens.
  [[nodiscard]] static Result<std::shared_ptr<ServiceClient>> connect(
      const std::string& serviceName, ServiceInterface interface);
  ~ServiceClient();
  ServiceClient(const ServiceClient&) = delete;
  ServiceClient& operator=(const ServiceClient&) = delete;

  // Sends a request and returns; `completion` is called once, on the client's own thread.
  void call(const std::string& selector, std::string encodedArguments, Completion completion);
  // Sends a request and waits for its reply on the calling thread.
  [[nodiscard]] Result<std::string> callSynchronously(const std::string& selector,
                                                      std::string encodedArguments);

 private:
  struct State;
  explicit ServiceClient(std::shared_ptr<State> shared);
  std::shared_ptr<State> state;
};

}  // namespace quenlet
