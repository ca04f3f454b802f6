#include "tools/presentation/ImageType.h"

namespace quenlet {

std::optional<ImageType> ImageType::of(std::string_view bytes) {
  if (bytes.starts_with("\xFF\xD8\xFF")) return ImageType{"JPEG", "image/jpeg"};
  if (bytes.starts_with("\x89PNG\r\n\x1A\n")) return ImageType{"PNG", "image/png"};
  if (bytes.starts_with("GIF87a") || bytes.starts_with("GIF89a")) {
    return ImageType{"GIF", "image/gif"};
  }
  if (bytes.starts_with("RIFF") && bytes.substr(0, 12).ends_with("WEBP")) {
    return ImageType{"WebP", "image/webp"};
  }
  return std::nullopt;
}

}  // namespace quenlet
