#pragma once

#include <filesystem>

#include "platform/files/FileOperations.h"

namespace quenlet {

// The two directory operations that durable files need. Each returns 0 or an errno value.
// Stateless.
class DurableDirectory final {
 public:
  DurableDirectory() = delete;

  // Creates `directory` and missing parents, with mode 0700, and makes each new entry durable.
  // Existing directories keep their mode.
  [[nodiscard]] static int ensure(FileOperations& operations,
                                  const std::filesystem::path& directory);
  // Makes the entries of `directory` durable: creations, renames and removals in it.
  [[nodiscard]] static int synchronize(FileOperations& operations,
                                       const std::filesystem::path& directory);
  // The directory that holds `file`; "." for a bare name.
  [[nodiscard]] static std::filesystem::path of(const std::filesystem::path& file);
};

}  // namespace quenlet
