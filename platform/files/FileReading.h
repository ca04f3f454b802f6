#pragma once

#include <cstdint>
#include <filesystem>
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

}  // namespace quenlet
