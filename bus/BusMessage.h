#pragma once

#include <systemd/sd-bus.h>

#include <memory>

namespace quenlet {

// One reference to a message, dropped at the end.
struct BusMessageUnref final {
  void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
using BusMessage = std::unique_ptr<sd_bus_message, BusMessageUnref>;

// A further reference to a message of somebody else's.
[[nodiscard]] inline BusMessage keepMessage(sd_bus_message* message) {
  return BusMessage(sd_bus_message_ref(message));
}

}  // namespace quenlet
