#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quenlet {

// Finds the digits of one phone number as people, address books and "tel:" links write it:
//
//   [tel:] [+] digits and separators [remark] [extension]
//
// Digits may be of any script. Separators are blanks, dashes, dots, slashes, brackets and the
// invisible direction marks that come with copied text. A remark is words in brackets
// ("(private)"). An extension is "x", "ext", "extn" or the like and digits, the parameters of a
// link (";ext=12") or the digits dialled after a pause (",,12#", "p12", "w12"). Anything else, such
// as a letter, means that the text is not a phone number. For one scan of one text, which outlives
// the scanner.
class PhoneNumberScanner final {
 public:
  explicit PhoneNumberScanner(std::string_view source) : text(source) {}

  // The number's digits as ASCII, with a leading '+' kept, without the extension; nothing when the
  // text is not a plausible number (2 to 20 digits). The bracketed 0 of "+49 (0)30", which is
  // dialled only within the country, is left out.
  [[nodiscard]] std::optional<std::string> scan();
  // After a scan: the ASCII digits of the extension, or those dialled after a pause.
  [[nodiscard]] const std::string& extension() const { return extensionDigits; }

 private:
  // The next character, or nothing at the end or at bytes that are not UTF-8.
  [[nodiscard]] std::optional<char32_t> peek();
  [[nodiscard]] bool atEnd() const { return position == text.size(); }
  void advance() { position += characterSize; }
  bool skipWord(std::string_view lowerCaseWord);
  bool skipRemark();
  void skipBlanks();
  bool scanCharacter(char32_t character, std::string& number);
  bool scanExtension();
  bool scanLinkParameters();
  bool scanDialledAfterPause();

  std::string_view text;
  std::size_t position = 0;
  std::size_t characterSize = 0;
  std::string extensionDigits;
};

}  // namespace quenlet
