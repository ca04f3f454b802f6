#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

#include "platform/files/DataProxy.h"
#include "platform/foundation/Either.h"

namespace quenlet {

// Whether a file could not be read because there is none.
[[nodiscard]] bool isMissingFile(const Error& error);

// All bytes of a file of up to `maximumSizeInBytes`, on the calling thread; EFBIG for a larger one,
// which is not read.
[[nodiscard]] Result<std::string> readFileOfAtMost(std::uintmax_t maximumSizeInBytes,
                                                   const std::filesystem::path& file,
                                                   DataProxy& dataProxy);

// Why the bytes of `file` cannot be read; null when they can, and when there is no such file. When
// the system is short of what others give back (descriptors, memory), `waitAWhile` is called, on
// the calling thread, and the file tried again for as long as it answers true.
[[nodiscard]] ErrorPtr whyUnreadable(const std::filesystem::path& file, DataProxy& dataProxy,
                                     const std::function<bool()>& waitAWhile);

}  // namespace quenlet
