#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/files/DataProxy.h"
#include "platform/foundation/PropertyList.h"
#include "quenlet/Result.h"

namespace quenlet {

inline constexpr char TelephonyErrorDomain[] = "ovaro.quenlet.telephony-error";

// Reads the small files that describe the device and its SIM cards. Stateless; any thread.
class TelephonyFile final {
 public:
  static constexpr std::uintmax_t maximumSizeInBytes = std::uintmax_t{1} << 20;

  TelephonyFile() = delete;

  // The bytes of a regular file of up to the maximum size.
  [[nodiscard]] static Result<std::string> readBytes(DataProxy& dataProxy,
                                                     const std::filesystem::path& file);
  // The property list of a file; nothing if it is missing.
  [[nodiscard]] static Result<std::optional<PropertyList>> read(DataProxy& dataProxy,
                                                                const std::filesystem::path& file);
  // The error for a property list with unexpected content.
  [[nodiscard]] static ErrorPtr damage(std::string sentence);
};

}  // namespace quenlet
