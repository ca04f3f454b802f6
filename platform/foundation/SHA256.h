#pragma once

#include <string>
#include <string_view>

namespace quenlet {

// The 32 bytes of the SHA-256 digest of `bytes`. For digests that others compute as well or that
// are stored; tables in memory take KeyedHash, which is faster. A pure function.
[[nodiscard]] std::string sha256(std::string_view bytes);

}  // namespace quenlet
