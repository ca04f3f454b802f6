#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "quenlet/Result.h"

namespace quenlet {

// Reads what other programs keep. Nothing is followed but directories, nothing is waited for, and
// nothing large is taken in. No error names a file: some programs call files after addresses.
// Stateless.
class ForeignFiles final {
 public:
  static constexpr std::size_t mostBytes = std::size_t{4} << 20;
  static constexpr std::size_t mostNames = 10000;

  ForeignFiles() = delete;

  // The bytes of a regular file; nothing when it does not exist. An error for one of more than
  // `mostBytes`, a symbolic link, or something other than a file.
  [[nodiscard]] static Result<std::optional<std::string>> read(const std::filesystem::path& file);
  // The same for text. An error unless it is UTF-8 and ends with a line end: programs that write
  // line by line end with one, so that a file without is what a full disk left of it.
  [[nodiscard]] static Result<std::optional<std::string>> readLines(
      const std::filesystem::path& file);
  // Null for what readLines() takes; also for a text that is empty.
  [[nodiscard]] static ErrorPtr problemOfLines(const std::string& text);
  // The names in a directory, sorted; none when it does not exist.
  [[nodiscard]] static Result<std::vector<std::string>> names(
      const std::filesystem::path& directory);

  // `error` with `place`, a phrase of the caller's for the file, in front of its sentence.
  [[nodiscard]] static ErrorPtr locate(const std::string& place, const Error& error);
};

}  // namespace quenlet
