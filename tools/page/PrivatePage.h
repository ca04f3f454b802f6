#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "quenlet/Result.h"

namespace quenlet {

// The file in which a page waits for the browser: in a directory that only the user can enter
// and that goes when the session ends, under a name without personal values. There is one; a new
// page takes the place of the former. Stateless.
class PrivatePage final {
 public:
  PrivatePage() = delete;

  // Mode 0600. An error if the user has no private runtime directory.
  [[nodiscard]] static Result<std::filesystem::path> write(std::string_view page);

  // Asks the desktop to open the file, and returns once it has, or is busy with it. Otherwise the
  // reason: there is no display, no program to ask, or that program failed.
  [[nodiscard]] static std::optional<std::string> open(const std::filesystem::path& file);
};

}  // namespace quenlet
