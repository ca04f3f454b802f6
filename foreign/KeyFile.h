#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quenlet/Result.h"

namespace quenlet {

// A key file, as GNOME, KDE and Mozilla programs write them:
//
//   # a comment                            ";" begins one, too
//   [Group]                                KDE may add flags: "[Group][$i]"
//   Key=text with \s \t \n \r \\ \xC3      likewise "Key[$e]"
//   Key[de]=the same for a language        a key of its own, which nobody asks for
//   List=one;t\;wo;                        or with commas
//
// Keys in front of the first group belong to the group "". Immutable.
class KeyFile final {
 public:
  // What two entries for one key mean. Where a file decides who somebody is, they are an error: it
  // is not for the reader to choose.
  enum class Doubles { lastCounts, refused };

  // An error, which quotes nothing, when a line is something else.
  [[nodiscard]] static Result<KeyFile> parse(std::string_view text,
                                             Doubles doubles = Doubles::lastCounts);

  // Sorted.
  [[nodiscard]] std::vector<std::string> groups() const;
  [[nodiscard]] bool hasGroup(const std::string& group) const { return entries.contains(group); }
  // Nothing when there is no such key, or the text behind the escapes is not UTF-8.
  [[nodiscard]] std::optional<std::string> text(const std::string& group,
                                                const std::string& key) const;
  // The items between separators that no backslash stands before; blanks around them and empty ones
  // are left out.
  [[nodiscard]] std::vector<std::string> list(const std::string& group, const std::string& key,
                                              char separator) const;
  // Whether the key's value is "true", in any letter case, or "1".
  [[nodiscard]] bool isTrue(const std::string& group, const std::string& key) const;
  // Whether the key's value is "false", in any letter case, or "0".
  [[nodiscard]] bool isFalse(const std::string& group, const std::string& key) const;

 private:
  using Group = std::map<std::string, std::string, std::less<>>;
  [[nodiscard]] const std::string* find(const std::string& group, const std::string& key) const;

  // As written, with the escapes.
  std::map<std::string, Group, std::less<>> entries;
};

}  // namespace quenlet
