#pragma once

#include <filesystem>
#include <memory>

#include "platform/files/DataProxy.h"
#include "platform/foundation/ProblemReporter.h"
#include "platform/telephony/Telephony.h"

namespace quenlet {

// Below the home directory.
inline constexpr char DevicePath[] = "Library/Telephony/device.plist";

// Where the system says what kind of device it runs on.
struct ChassisFiles final {
  // What an administrator chose, which counts before what the firmware says.
  std::filesystem::path machineInfo = "/etc/machine-info";
  std::filesystem::path deviceTree = "/proc/device-tree/chassis-type";
};

// Facts about the device from a property list that the owner may write, a dictionary of integers.
// If it does not give the device's class, that is 1 when the system calls the device a handset.
// Thread-safe; the files are read at each call.
class PropertyListDeviceInfo final : public DeviceInfo {
 public:
  PropertyListDeviceInfo(std::filesystem::path deviceFile, ChassisFiles chassisFiles,
                         std::shared_ptr<DataProxy> dataProxy);

  // A device file that cannot be read is reported on standard error, and treated as empty.
  [[nodiscard]] std::int64_t integerAnswer(const std::string& key,
                                           std::int64_t defaultAnswer) override;

 private:
  const std::filesystem::path deviceFile;
  const ChassisFiles chassisFiles;
  const std::shared_ptr<DataProxy> dataProxy;
  ProblemReporter problems;
};

}  // namespace quenlet
