#include "platform/telephony/MachineInfo.h"

#include <algorithm>

#include "platform/foundation/Text.h"

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

}  // namespace

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

}  // namespace quenlet
