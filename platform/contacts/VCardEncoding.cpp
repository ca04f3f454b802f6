#include "platform/contacts/VCardEncoding.h"

#include "platform/contacts/VCardText.h"
#include "platform/foundation/Text.h"
#include "platform/foundation/TextEncoding.h"

namespace quenlet {
namespace {

constexpr char oldWesternCharset[] = "windows-1252";

std::optional<std::string> textInCharset(std::string_view bytes, const std::string& charset,
                                         VCardSyntax syntax) {
  if (charset.empty() || lowercased(charset) == "utf-8") {
    if (isValidUTF8(bytes)) return std::string(bytes);
    return syntax == VCardSyntax::old ? utf8Text(bytes, oldWesternCharset) : std::nullopt;
  }
  return utf8Text(bytes, charset);
}

// Escapes line ends, and in the old syntax commas, as the current syntax does.
std::string inCurrentSyntax(std::string_view text, VCardSyntax syntax) {
  std::string current;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 1 < text.size()) {
      current.append(text.substr(i++, 2));
    } else if (text[i] == '\r' || text[i] == '\n') {
      if (text.substr(i).starts_with("\r\n")) ++i;
      current += "\\n";
    } else {
      if (text[i] == ',' && syntax == VCardSyntax::old) current += '\\';
      current += text[i];
    }
  }
  return current;
}

}  // namespace

std::optional<std::string_view> vCardValueAsText(const VCardProperty& property, VCardSyntax syntax,
                                                 std::string& buffer) {
  std::string_view value = property.value;
  const std::string charset = property.parameterValue("CHARSET");
  const bool isQuoted = lowercased(property.parameterValue("ENCODING")) == "quoted-printable";
  if (isQuoted || !charset.empty() || syntax == VCardSyntax::old) {
    const std::string bytes = isQuoted ? decodedQuotedPrintable(value) : std::string(value);
    const std::optional<std::string> text = textInCharset(bytes, charset, syntax);
    if (!text) return std::nullopt;
    value = buffer = inCurrentSyntax(*text, syntax);
  }
  if (!isValidUTF8(value) || holdsControlCharacter(value)) return std::nullopt;
  return value;
}

std::optional<std::string> vCardsFromUTF16(std::string_view text) {
  using std::literals::string_view_literals::operator""sv;
  if (text.starts_with("\xFF\xFE") || text.starts_with("\xFE\xFF")) return utf8Text(text, "UTF-16");
  // Without a byte order mark, the zero beside the "B" of BEGIN tells.
  if (text.starts_with("B\0"sv)) return utf8Text(text, "UTF-16LE");
  if (text.starts_with("\0B"sv)) return utf8Text(text, "UTF-16BE");
  return std::nullopt;
}

}  // namespace quenlet
