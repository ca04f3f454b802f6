#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "platform/files/DataProxy.h"
#include "quenlet/Result.h"

namespace quenlet {

// Whether a file could not be read because it does not exist.
[[nodiscard]] bool isMissingFile(const Error& error);

// All bytes of a file of up to `maximumSizeInBytes`, on the calling thread; EFBIG for a larger one.
[[nodiscard]] Result<std::string> readFileOfAtMost(std::uintmax_t maximumSizeInBytes,
                                                   const std::filesystem::path& file,
                                                   DataProxy& dataProxy);

// Why the bytes of `file` cannot be read; null when they can, or when the file does not exist. In a
// passing shortage (of descriptors or memory), calls `waitAWhile` on the calling thread and tries
// again for as long as it returns true.
[[nodiscard]] ErrorPtr whyUnreadable(const std::filesystem::path& file, DataProxy& dataProxy,
                                     const std::function<bool()>& waitAWhile);

}  // namespace quenlet
