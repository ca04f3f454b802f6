#include "platform/contacts/VCardText.h"

#include "platform/foundation/Base64.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

int hexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The byte given by two hexadecimal digits at the start of `text`.
std::optional<char> byteOfHex(std::string_view text) {
  if (text.size() < 2) return std::nullopt;
  const int high = hexValue(text[0]);
  const int low = hexValue(text[1]);
  if (high < 0 || low < 0) return std::nullopt;
  return static_cast<char>(high << 4 | low);
}

std::optional<std::string> decodedPercents(std::string_view encoded) {
  std::string bytes;
  for (std::size_t i = 0; i < encoded.size(); ++i) {
    if (encoded[i] != '%') {
      bytes += encoded[i];
      continue;
    }
    const std::optional<char> byte = byteOfHex(encoded.substr(i + 1));
    if (!byte) return std::nullopt;
    bytes += *byte;
    i += 2;
  }
  return bytes;
}

// The size in bytes of a control character at the start of UTF-8 text, or 0.
std::size_t controlCharacterSize(std::string_view text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if ((first < 0x20 && first != '\t') || first == 0x7F) return 1;
  const bool isC1 = first == 0xC2 && text.size() > 1 && static_cast<unsigned char>(text[1]) < 0xA0;
  return isC1 ? 2 : 0;
}

}  // namespace

bool holdsControlCharacter(std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (controlCharacterSize(text.substr(i)) > 0) return true;
  }
  return false;
}

std::string unescapedVCardText(std::string_view escaped) {
  std::string text;
  text.reserve(escaped.size());
  for (std::size_t i = 0; i < escaped.size(); ++i) {
    const char next = escaped[i] == '\\' && i + 1 < escaped.size() ? escaped[i + 1] : '\0';
    if (next == 'n' || next == 'N') {
      text += '\n';
    } else if (next == ',' || next == ';' || next == '\\' || next == ':') {
      text += next;
    } else {
      text += escaped[i];
      continue;
    }
    ++i;
  }
  return text;
}

std::string escapedVCardText(std::string_view text) {
  std::string escaped;
  if (!isValidUTF8(text)) return escaped;
  escaped.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\n' || c == '\r') {
      if (c == '\r' && text.substr(i + 1).starts_with('\n')) continue;
      escaped += "\\n";
    } else if (c == ',' || c == ';' || c == '\\') {
      escaped += '\\';
      escaped += c;
    } else if (const std::size_t size = controlCharacterSize(text.substr(i)); size > 0) {
      i += size - 1;
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string_view takeVCardText(std::optional<std::string_view>& rest, char separator) {
  const std::string_view whole = *rest;
  for (std::size_t i = 0; i < whole.size(); ++i) {
    if (whole[i] == '\\') {
      ++i;
    } else if (whole[i] == separator) {
      rest = whole.substr(i + 1);
      return whole.substr(0, i);
    }
  }
  rest.reset();
  return whole;
}

std::string decodedQuotedPrintable(std::string_view encoded) {
  std::string bytes;
  bytes.reserve(encoded.size());
  for (std::size_t i = 0; i < encoded.size(); ++i) {
    const std::optional<char> byte =
        encoded[i] == '=' ? byteOfHex(encoded.substr(i + 1)) : std::nullopt;
    if (byte) i += 2;
    const bool isSoftBreakAtEnd = !byte && encoded[i] == '=' && i + 1 == encoded.size();
    if (!isSoftBreakAtEnd) bytes += byte.value_or(encoded[i]);
  }
  return bytes;
}

std::optional<std::string> decodedDataURI(std::string_view uri) {
  const std::size_t comma = uri.find(',');
  if (comma == std::string_view::npos) return std::nullopt;
  std::string_view mediaType = uri.substr(0, comma);
  // Some programs escape the comma, as in text.
  if (mediaType.ends_with('\\')) mediaType.remove_suffix(1);
  const std::string_view content = uri.substr(comma + 1);
  if (lowercased(mediaType).ends_with(";base64")) {
    return decodedBase64(content, Base64Padding::optional);
  }
  return decodedPercents(content);
}

}  // namespace quenlet
