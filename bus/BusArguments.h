#pragma once

#include <systemd/sd-bus.h>

#include <cstddef>
#include <string>

#include "bus/BusValue.h"
#include "quenlet/Result.h"

// The bodies of messages. Peers are not trusted: reading stops at the limits, however a message is
// nested. Pure functions.
namespace quenlet {

struct BusLimits final {
  std::size_t depth = 16;
  // Keys, elements and containers, all together.
  std::size_t values = 65536;
  // All texts and byte arrays together.
  std::size_t bytes = std::size_t{32} << 20;
};

// All arguments, from the first one on. LimitsExceeded when the message is larger than `limits`.
[[nodiscard]] Result<BusValues> readArguments(sd_bus_message* message,
                                              const BusLimits& limits = {});

// Appends arguments of the given signature to a message that was not sent. Values below a variant
// have the type that BusValue::signature() says. The error is EINVAL's when a value is not of the
// type which the signature has for it, or not one that a message can hold, as text that is not
// UTF-8.
[[nodiscard]] ErrorPtr appendArguments(sd_bus_message* message, const std::string& signature,
                                       const BusValues& arguments);

}  // namespace quenlet
