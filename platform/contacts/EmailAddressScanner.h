#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quenlet {

// Finds an e-mail address in free text: "Ann <ann@example.org>", "mailto:ann@example.org?cc=bob".
// Looks at the first 64 KiB only, always in time proportional to the text. Stateless;
// any thread.
//
//   address   local "@" label ("." label)+
//   local     up to 64 bytes: letters, digits and "!#$%&'*+-^_~", with single dots between; begins
//             with a letter, a digit, "+" or "_". Or the like in double quotes, with blanks and
//             escapes
//   label     up to 63 letters, digits and hyphens; the last label does not begin with a digit
//
// Letters are those of any script. In a script without blanks between words, an address in Latin
// letters ends where that script begins: "邮箱是ann@example.org谢谢".
//
// Whatever wraps an address in running text is left out, even where the grammar of mail would allow
// it: quotes, brackets, a "to=", a path, the full stop of a sentence. A text that consists of one
// address is taken as it is, even "a/b@example.org" or "a=b@example.org".
//
// The user of a URL can be an address ("imap://ann%40example.org@imap.example.org"); a password and
// the host are not one together. Domains without a dot, numeric ones and address literals are
// ignored: as donated values, such addresses would reach nobody.
class EmailAddressScanner final {
 public:
  static constexpr std::size_t longestTextInBytes = std::size_t{1} << 16;

  // The first address as written, except that a full-width "@" becomes a plain one.
  [[nodiscard]] std::optional<std::string> firstEmailAddressInString(std::string_view text) const;
};

}  // namespace quenlet
