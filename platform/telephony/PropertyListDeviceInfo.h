#pragma once

#include <filesystem>
#include <memory>

#include "platform/files/DataProxy.h"
#include "platform/foundation/ProblemReporter.h"
#include "platform/telephony/DeviceInfo.h"

namespace quenlet {

// Facts of the device from a property list that the owner may write, a dictionary of integers.
// Where that does not say, the device's class is 1 when the system's machine-info file says
// CHASSIS=handset. Thread-safe; the files are read at each question.
class PropertyListDeviceInfo final : public DeviceInfo {
 public:
  PropertyListDeviceInfo(std::filesystem::path deviceFile, std::filesystem::path machineInfoFile,
                         std::shared_ptr<DataProxy> dataProxy);

  // A device file that cannot be read answers nothing, and is said on standard error.
  [[nodiscard]] std::int64_t integerAnswer(const std::string& key,
                                           std::int64_t defaultAnswer) override;

 private:
  const std::filesystem::path deviceFile;
  const std::filesystem::path machineInfoFile;
  const std::shared_ptr<DataProxy> dataProxy;
  ProblemReporter problems;
};

}  // namespace quenlet
