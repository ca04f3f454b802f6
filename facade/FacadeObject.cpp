#include "facade/FacadeObject.h"

#include <utility>

#include "platform/scheduling/runGuarded.h"

namespace quenlet {
namespace {

constexpr std::uint32_t version = 1;

}  // namespace

// Callers are checked by us: without this flag, the library would ask the bus about each of them,
// and wait for the answer.
const sd_bus_vtable FacadeObject::members[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("Donate", "aa{sv}", "", receive, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("RemoveDonations", "as", "", receive, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("RemoveBundle", "s", "", receive, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ListDonations", "", "aa{sv}", receive, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("GetCard", "a{sv}", "a{sv}", receive, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("GetVCard", "a{sv}", "s", receive, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Watch", "", "", receive, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("Unwatch", "", "", receive, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("ChangeAccount", "a{sv}a{sv}", "", receive, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("RejectDonation", "s", "", receive, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("RejectCluster", "s", "", receive, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_METHOD("RemoveAllRejections", "", "", receive, SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_SIGNAL("CardChanged", "", 0),
    SD_BUS_PROPERTY("Version", "u", readVersion, 0, SD_BUS_VTABLE_PROPERTY_CONST),
    SD_BUS_PROPERTY("DonationsEnabled", "b", readDonationsEnabled, 0, 0),
    SD_BUS_VTABLE_END};

Result<std::unique_ptr<FacadeObject>> FacadeObject::put(BusConnection& bus, Handlers handlers) {
  using Put = Result<std::unique_ptr<FacadeObject>>;
  auto object = std::unique_ptr<FacadeObject>(new FacadeObject(bus, std::move(handlers)));
  int result = sd_bus_add_object_vtable(bus.handle(), &object->slot, FacadePath, FacadeName,
                                        members, object.get());
  if (result >= 0) result = sd_bus_add_filter(bus.handle(), &object->filter, notice, object.get());
  if (result < 0) return Put::failure(makePosixError(-result, "put the object on the bus"));
  return Put::success(std::move(object));
}

FacadeObject::~FacadeObject() {
  sd_bus_slot_unref(filter);
  sd_bus_slot_unref(slot);
}

ErrorPtr FacadeObject::tellCardChanged(const std::string& uniqueName) {
  return bus.emit({.path = FacadePath, .member = "CardChanged"}, FacadeName, "", uniqueName);
}

int FacadeObject::receive(sd_bus_message* call, void* self, sd_bus_error*) {
  runGuarded([call, self] {
    static_cast<FacadeObject*>(self)->handlers.call(std::make_shared<BusRequest>(call));
  });
  return 1;
}

int FacadeObject::notice(sd_bus_message*, void* self, sd_bus_error*) {
  runGuarded([self] { static_cast<FacadeObject*>(self)->handlers.message(); });
  return 0;
}

int FacadeObject::readVersion(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply,
                              void*, sd_bus_error*) {
  return sd_bus_message_append_basic(reply, SD_BUS_TYPE_UINT32, &version);
}

int FacadeObject::readDonationsEnabled(sd_bus*, const char*, const char*, const char*,
                                       sd_bus_message* reply, void* self, sd_bus_error*) {
  int enabled = 0;
  runGuarded([&enabled, self] {
    enabled = static_cast<FacadeObject*>(self)->handlers.isDonationsEnabled() ? 1 : 0;
  });
  return sd_bus_message_append_basic(reply, SD_BUS_TYPE_BOOLEAN, &enabled);
}

}  // namespace quenlet
