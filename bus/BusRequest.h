#pragma once

#include <memory>
#include <string>

#include "bus/BusArguments.h"
#include "bus/BusMessage.h"
#include "bus/BusValue.h"

namespace quenlet {

// A call that somebody made of a method of ours, to be answered once, at any time. One that is
// dropped without an answer is answered with an error. Use on the loop's thread, while the
// connection lives.
class BusRequest final {
 public:
  explicit BusRequest(sd_bus_message* call);
  ~BusRequest();
  BusRequest(const BusRequest&) = delete;
  BusRequest& operator=(const BusRequest&) = delete;

  // The unique name of the caller.
  [[nodiscard]] std::string sender() const;
  [[nodiscard]] std::string member() const;
  [[nodiscard]] Result<BusValues> arguments(const BusLimits& limits) const;

  // If the answer cannot be sent, as with more than a message holds, an error is, instead.
  void reply(const std::string& signature = {}, const BusValues& values = {});
  void fail(const std::string& errorName, const std::string& message);

 private:
  BusMessage message;
};

}  // namespace quenlet
