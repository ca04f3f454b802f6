#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>

#include "bus/BusConnection.h"
#include "bus/BusRequest.h"
#include "quenlet/Result.h"

namespace quenlet {

inline constexpr char FacadeName[] = "org.quenlet.Agent1";
inline constexpr char FacadePath[] = "/org/quenlet/Agent1";

// The object that stands for the agent on the bus: its methods, properties and signal, as
// packaging/org.quenlet.Agent1.xml describes them. Use on the loop's thread.
class FacadeObject final {
 public:
  using Requests = std::shared_ptr<BusRequest>;
  struct Handlers final {
    // For each call of a known method with arguments of its signature.
    std::function<void(Requests request)> call;
    std::function<bool()> isDonationsEnabled;
    // For each message that comes, before anything else.
    std::function<void()> message;
  };

  // An error when the object cannot be put on the bus.
  [[nodiscard]] static Result<std::unique_ptr<FacadeObject>> put(BusConnection& bus,
                                                                 Handlers handlers);
  ~FacadeObject();
  FacadeObject(const FacadeObject&) = delete;
  FacadeObject& operator=(const FacadeObject&) = delete;

  [[nodiscard]] ErrorPtr tellCardChanged(const std::string& uniqueName);

 private:
  FacadeObject(BusConnection& connection, Handlers called)
      : bus(connection), handlers(std::move(called)) {}
  static int receive(sd_bus_message* call, void* self, sd_bus_error* error);
  static int notice(sd_bus_message* message, void* self, sd_bus_error* error);
  static int readDonationsEnabled(sd_bus* connection, const char* path, const char* interface,
                                  const char* property, sd_bus_message* reply, void* self,
                                  sd_bus_error* error);
  static int readVersion(sd_bus* connection, const char* path, const char* interface,
                         const char* property, sd_bus_message* reply, void* self,
                         sd_bus_error* error);
  static const sd_bus_vtable members[];

  BusConnection& bus;
  const Handlers handlers;
  sd_bus_slot* slot = nullptr;
  sd_bus_slot* filter = nullptr;
};

}  // namespace quenlet
