#include "bus/BusError.h"

#include <utility>

namespace quenlet {

ErrorPtr makeBusError(const std::string& name, std::string message) {
  sd_bus_error known = SD_BUS_ERROR_NULL;
  sd_bus_error_set(&known, name.c_str(), nullptr);
  const int code = sd_bus_error_get_errno(&known);
  sd_bus_error_free(&known);
  return std::make_shared<const Error>(
      BusErrorDomain, code,
      Error::UserInfo{{BusErrorNameKey, name}, {DebugDescriptionKey, std::move(message)}});
}

ErrorPtr makeBusError(const sd_bus_error& error) {
  return makeBusError(error.name, error.message == nullptr ? "" : error.message);
}

std::string busErrorName(const Error& error) {
  const auto found = error.userInfo().find(BusErrorNameKey);
  return found == error.userInfo().end() ? std::string() : found->second;
}

bool isAbsence(const Error& error) {
  const std::string name = busErrorName(error);
  return name == BusNameHasNoOwner || name == BusServiceUnknown ||
         name.starts_with("org.freedesktop.DBus.Error.Spawn");
}

}  // namespace quenlet
