#include "facade/KeyFileText.h"

#include <algorithm>

#include "platform/foundation/Text.h"

namespace quenlet {

std::optional<std::string> keyFileText(std::string_view file, std::string_view group,
                                       std::string_view key) {
  bool isInGroup = false;
  std::optional<std::string> value;
  while (!file.empty()) {
    const std::size_t end = std::min(file.find('\n'), file.size());
    const std::string_view line = trimmed(file.substr(0, end));
    file.remove_prefix(std::min(end + 1, file.size()));
    if (line.starts_with('[') && line.ends_with(']')) {
      isInGroup = line.substr(1, line.size() - 2) == group;
    }
    const std::size_t sign = line.find('=');
    if (!isInGroup || sign == std::string_view::npos) continue;
    if (trimmed(line.substr(0, sign)) != key) continue;
    if (value) return std::nullopt;
    value = trimmed(line.substr(sign + 1));
  }
  return value;
}

}  // namespace quenlet
