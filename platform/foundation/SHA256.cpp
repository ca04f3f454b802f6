#include "platform/foundation/SHA256.h"

#include <sha2.h>

#include <array>
#include <cstdint>

namespace quenlet {

std::string sha256(std::string_view bytes) {
  SHA2_CTX context;
  SHA256Init(&context);
  SHA256Update(&context, reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
  std::array<std::uint8_t, SHA256_DIGEST_LENGTH> digest{};
  SHA256Final(digest.data(), &context);
  return std::string(digest.begin(), digest.end());
}

}  // namespace quenlet
