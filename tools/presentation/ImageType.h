#pragma once

#include <optional>
#include <string_view>

namespace quenlet {

// The types of image that are told apart, by the bytes with which each begins.
struct ImageType final {
  const char* name;       // "PNG"
  const char* mediaType;  // "image/png"

  // Nothing for any other bytes.
  [[nodiscard]] static std::optional<ImageType> of(std::string_view bytes);
};

}  // namespace quenlet
