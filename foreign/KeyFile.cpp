#include "foreign/KeyFile.h"

#include <algorithm>
#include <utility>

#include "foreign/LineScanner.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

// `name` without the flags of KDE's behind it.
std::string_view withoutFlags(std::string_view name) {
  const std::size_t flags = name.rfind("[$");
  return flags != name.npos && flags > 0 && name.ends_with(']') ? trimmed(name.substr(0, flags))
                                                                : name;
}

std::string unescaped(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const char first = text.front();
    text.remove_prefix(1);
    if (first != '\\' || text.empty()) {
      result += first;
      continue;
    }
    const char escape = text.front();
    text.remove_prefix(1);
    const auto byte = escape == 'x' ? hexadecimalNumber(text.substr(0, 2), 2) : std::nullopt;
    if (byte) {
      result += static_cast<char>(*byte);
      text.remove_prefix(2);
    } else if (escape == 's') {
      result += ' ';
    } else if (escape == 't') {
      result += '\t';
    } else if (escape == 'n') {
      result += '\n';
    } else if (escape == 'r') {
      result += '\r';
    } else if (escape == '\\' || escape == ';' || escape == ',') {
      result += escape;
    } else {
      result += {'\\', escape};
    }
  }
  return result;
}

// The piece up to the next separator, which is taken off `rest` with it.
std::string_view takeItem(std::string_view& rest, char separator) {
  std::size_t end = 0;
  while (end < rest.size() && rest[end] != separator) end += rest[end] == '\\' ? 2 : 1;
  const std::string_view item = rest.substr(0, end);
  rest.remove_prefix(std::min(rest.size(), end + 1));
  return item;
}

}  // namespace

Result<KeyFile> KeyFile::parse(std::string_view text, Doubles doubles) {
  KeyFile file;
  Group* group = nullptr;
  for (LineScanner lines(text); lines.next();) {
    const std::string_view line = trimmed(lines.line());
    if (line.empty() || line.front() == '#' || line.front() == ';') continue;
    if (line.front() == '[') {
      const std::string_view header = withoutFlags(line);
      if (header.size() < 2 || !header.ends_with(']')) {
        return Result<KeyFile>::failure(lines.fault("begins a group and does not end it"));
      }
      group = &file.entries[std::string(header.substr(1, header.size() - 2))];
      continue;
    }
    const std::size_t equals = line.find('=');
    if (equals == line.npos) return Result<KeyFile>::failure(lines.fault("has no \"=\""));
    const std::string_view key = withoutFlags(trimmed(line.substr(0, equals)));
    if (group == nullptr) group = &file.entries[std::string()];
    const auto [entry, isNew] =
        group->insert_or_assign(std::string(key), std::string(trimmed(line.substr(equals + 1))));
    if (!isNew && doubles == Doubles::refused) {
      return Result<KeyFile>::failure(lines.fault("has a key for the second time"));
    }
  }
  return Result<KeyFile>::success(std::move(file));
}

std::vector<std::string> KeyFile::groups() const {
  std::vector<std::string> names;
  for (const auto& [name, group] : entries) names.push_back(name);
  return names;
}

const std::string* KeyFile::find(const std::string& group, const std::string& key) const {
  const auto keys = entries.find(group);
  if (keys == entries.end()) return nullptr;
  const auto value = keys->second.find(key);
  return value == keys->second.end() ? nullptr : &value->second;
}

std::optional<std::string> KeyFile::text(const std::string& group, const std::string& key) const {
  const std::string* value = find(group, key);
  if (value == nullptr) return std::nullopt;
  std::string text = unescaped(*value);
  return isValidUTF8(text) ? std::optional(std::move(text)) : std::nullopt;
}

std::vector<std::string> KeyFile::list(const std::string& group, const std::string& key,
                                       char separator) const {
  std::vector<std::string> items;
  const std::string* value = find(group, key);
  if (value == nullptr) return items;
  for (std::string_view rest = *value; !rest.empty();) {
    const std::string item = unescaped(takeItem(rest, separator));
    if (!trimmed(item).empty() && isValidUTF8(item)) items.emplace_back(trimmed(item));
  }
  return items;
}

bool KeyFile::isTrue(const std::string& group, const std::string& key) const {
  const std::string* value = find(group, key);
  return value != nullptr && (*value == "1" || lowercased(*value) == "true");
}

bool KeyFile::isFalse(const std::string& group, const std::string& key) const {
  const std::string* value = find(group, key);
  return value != nullptr && (*value == "0" || lowercased(*value) == "false");
}

}  // namespace quenlet
