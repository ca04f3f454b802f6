#include "platform/telephony/PropertyListDeviceInfo.h"

#include <utility>

#include "platform/telephony/MachineInfo.h"
#include "platform/telephony/TelephonyFile.h"

namespace quenlet {
namespace {

constexpr std::int64_t handsetClass = 1;

Result<PropertyListDictionary> entriesOf(DataProxy& dataProxy, const std::filesystem::path& file) {
  using Entries = Result<PropertyListDictionary>;
  const Result<std::optional<PropertyList>> object = TelephonyFile::read(dataProxy, file);
  if (!object.ok()) return Entries::failure(object.error());
  if (!object.value()) return Entries::success({});
  if (const auto* entries = object.value()->dictionary()) return Entries::success(*entries);
  return Entries::failure(TelephonyFile::damage("the top level of the file is not a dictionary"));
}

bool isHandset(DataProxy& dataProxy, const std::filesystem::path& machineInfoFile) {
  // Many systems lack the file, so its absence is not reported.
  const Result<std::string> text = TelephonyFile::readBytes(dataProxy, machineInfoFile);
  return text.ok() && MachineInfo::valueOf("CHASSIS", text.value()) == "handset";
}

}  // namespace

PropertyListDeviceInfo::PropertyListDeviceInfo(std::filesystem::path deviceFile,
                                               std::filesystem::path machineInfoFile,
                                               std::shared_ptr<DataProxy> dataProxy)
    : deviceFile(std::move(deviceFile)),
      machineInfoFile(std::move(machineInfoFile)),
      dataProxy(std::move(dataProxy)),
      problems(this->deviceFile.filename().string()) {}

std::int64_t PropertyListDeviceInfo::integerAnswer(const std::string& key,
                                                   std::int64_t defaultAnswer) {
  const Result<PropertyListDictionary> entries = entriesOf(*dataProxy, deviceFile);
  problems.setProblem(entries.ok() ? nullptr : entries.error());
  if (entries.ok()) {
    const PropertyList* answer = findEntry(entries.value(), key);
    if (answer && answer->integer()) return *answer->integer();
  }
  if (key == DeviceClassNumberKey && isHandset(*dataProxy, machineInfoFile)) return handsetClass;
  return defaultAnswer;
}

}  // namespace quenlet
