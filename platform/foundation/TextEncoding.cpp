#include "platform/foundation/TextEncoding.h"

#include <unicode/ucnv.h>
#include <unicode/unistr.h>

#include <memory>

namespace quenlet {

std::optional<std::string> utf8Text(std::string_view bytes, const std::string& charset) {
  constexpr std::size_t mostBytes = std::size_t{1} << 30;
  // To the library, an empty name means the locale's encoding.
  if (bytes.size() > mostBytes || charset.empty()) return std::nullopt;
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<UConverter, decltype(&ucnv_close)> converter(
      ucnv_open(charset.c_str(), &status), &ucnv_close);
  if (U_FAILURE(status)) return std::nullopt;
  const icu::UnicodeString text(bytes.data(), static_cast<std::int32_t>(bytes.size()),
                                converter.get(), status);
  if (U_FAILURE(status)) return std::nullopt;
  std::string utf8;
  return text.toUTF8String(utf8);
}

}  // namespace quenlet
