#pragma once

#include <cstdint>
#include <string>

namespace quenlet {

inline constexpr char DeviceClassNumberKey[] = "DeviceClassNumber";

// Facts about the device by key. Thread-safe.
class DeviceInfo {
 public:
  virtual ~DeviceInfo() = default;
  // The device's integer for `key`; `defaultAnswer` when it has none.
  [[nodiscard]] virtual std::int64_t integerAnswer(const std::string& key,
                                                   std::int64_t defaultAnswer) = 0;
};

}  // namespace quenlet
