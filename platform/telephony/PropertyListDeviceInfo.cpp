#include "platform/telephony/PropertyListDeviceInfo.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/foundation/Text.h"
#include "platform/telephony/TelephonyFile.h"

namespace quenlet {
namespace {

// The value in front, without quotes and escapes; nothing when a quote is not closed.
std::optional<std::string> unquoted(std::string_view written) {
  std::string value;
  char quote = '\0';
  for (std::size_t position = 0; position < written.size(); ++position) {
    const char c = written[position];
    // As in a shell, a backslash in single quotes is an ordinary character.
    const bool escapes = c == '\\' && quote != '\'' && position + 1 < written.size();
    if (escapes) {
      value += written[++position];
    } else if (c == quote) {
      quote = '\0';
    } else if (quote == '\0' && (c == '"' || c == '\'')) {
      quote = c;
    } else if (quote == '\0' && (c == ' ' || c == '\t')) {
      break;
    } else {
      value += c;
    }
  }
  if (quote != '\0') return std::nullopt;
  return value;
}

// Reads texts of shell-like assignments, such as /etc/machine-info and /etc/os-release. Stateless.
class MachineInfo final {
 public:
  MachineInfo() = delete;

  // The value of `variable`, without quotes and escapes; the last assignment counts. Comments and
  // other lines are skipped. An unquoted value ends at a blank.
  [[nodiscard]] static std::optional<std::string> valueOf(std::string_view variable,
                                                          std::string_view text);
};

std::optional<std::string> MachineInfo::valueOf(std::string_view variable, std::string_view text) {
  std::optional<std::string> value;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = trimmed(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || line.substr(0, equals) != variable) continue;
    if (auto assigned = unquoted(line.substr(equals + 1))) value = std::move(assigned);
  }
  return value;
}

Result<PropertyListDictionary> entriesOf(DataProxy& dataProxy, const std::filesystem::path& file) {
  using Entries = Result<PropertyListDictionary>;
  const Result<std::optional<PropertyList>> object = TelephonyFile::read(dataProxy, file);
  if (!object.ok()) return Entries::failure(object.error());
  if (!object.value()) return Entries::success({});
  if (const auto* entries = object.value()->dictionary()) return Entries::success(*entries);
  return Entries::failure(TelephonyFile::damage("the top level of the file is not a dictionary"));
}

// The word for the kind of device. Many systems lack one file or both, so that is not reported.
std::string chassis(DataProxy& dataProxy, const ChassisFiles& files) {
  const Result<std::string> text = TelephonyFile::readBytes(dataProxy, files.machineInfo);
  if (text.ok()) {
    auto chosen = MachineInfo::valueOf("CHASSIS", text.value());
    if (chosen && !chosen->empty()) return *std::move(chosen);
  }
  const Result<std::string> word = TelephonyFile::readBytes(dataProxy, files.deviceTree);
  // As all texts of a device tree, it ends with a NUL.
  return word.ok() ? word.value().substr(0, word.value().find('\0')) : std::string();
}

}  // namespace

PropertyListDeviceInfo::PropertyListDeviceInfo(std::filesystem::path deviceFile,
                                               ChassisFiles chassisFiles,
                                               std::shared_ptr<DataProxy> dataProxy)
    : deviceFile(std::move(deviceFile)),
      chassisFiles(std::move(chassisFiles)),
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
  if (key == DeviceClassNumberKey && chassis(*dataProxy, chassisFiles) == "handset") {
    return handsetClass;
  }
  return defaultAnswer;
}

}  // namespace quenlet
