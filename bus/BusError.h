#pragma once

#include <systemd/sd-bus.h>

#include <string>

#include "quenlet/Error.h"

namespace quenlet {

// Errors that somebody on the bus answered with. The code is the errno that the bus library has for
// the name, the sentence the peer's own: it may hold anything, so it does not go into a log.
inline constexpr char BusErrorDomain[] = "org.freedesktop.DBus.Error";
// The user-info key of the error's name, as in "org.freedesktop.DBus.Error.NameHasNoOwner".
inline constexpr char BusErrorNameKey[] = "BusErrorName";

// A call that was not answered in time, or whose connection ended.
inline constexpr char BusNoReply[] = "org.freedesktop.DBus.Error.NoReply";
// Nobody has the name, or nobody can be started to have it.
inline constexpr char BusNameHasNoOwner[] = "org.freedesktop.DBus.Error.NameHasNoOwner";
inline constexpr char BusServiceUnknown[] = "org.freedesktop.DBus.Error.ServiceUnknown";
// What a peer sent is larger than the reader allows.
inline constexpr char BusLimitsExceeded[] = "org.freedesktop.DBus.Error.LimitsExceeded";

[[nodiscard]] ErrorPtr makeBusError(const std::string& name, std::string message);
// `error` is set.
[[nodiscard]] ErrorPtr makeBusError(const sd_bus_error& error);
// The name of an error that came over the bus; empty for another one.
[[nodiscard]] std::string busErrorName(const Error& error);
// Whether it says that nobody is there to answer, or can be started.
[[nodiscard]] bool isAbsence(const Error& error);

}  // namespace quenlet
