#pragma once

#include <string>

#include "quenlet/Error.h"

// The errors that callers get over the bus.
namespace quenlet {

inline constexpr char NotPermittedError[] = "org.quenlet.Error.NotPermitted";
inline constexpr char DonationsDisabledError[] = "org.quenlet.Error.DonationsDisabled";
inline constexpr char NotSerializableError[] = "org.quenlet.Error.NotSerializable";
inline constexpr char NoAgentError[] = "org.quenlet.Error.NoAgent";
inline constexpr char TooLargeError[] = "org.quenlet.Error.TooLarge";
inline constexpr char CancelledError[] = "org.quenlet.Error.Cancelled";
inline constexpr char InvalidArgsError[] = "org.freedesktop.DBus.Error.InvalidArgs";
inline constexpr char BusyError[] = "org.freedesktop.DBus.Error.LimitsExceeded";
inline constexpr char FailedError[] = "org.freedesktop.DBus.Error.Failed";

// An error for a caller, as a name on the bus and a sentence.
[[nodiscard]] ErrorPtr makeFacadeError(const std::string& name, std::string sentence);
// The name under which a caller gets an error: its own for one of the above, else what it means for
// a caller that the agent, or the client library, gave it.
[[nodiscard]] std::string facadeErrorName(const Error& error);

}  // namespace quenlet
