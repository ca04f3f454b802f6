#pragma once

#include <cstdint>
#include <string>

namespace quenlet {

inline constexpr char DeviceClassNumberKey[] = "DeviceClassNumber";

// Facts of the device by key. Thread-safe.
class DeviceInfo {
 public:
  virtual ~DeviceInfo() = default;
  // The integer that the device answers for `key`, `defaultAnswer` when it knows none.
  [[nodiscard]] virtual std::int64_t integerAnswer(const std::string& key,
                                                   std::int64_t defaultAnswer) = 0;
};

}  // namespace quenlet
