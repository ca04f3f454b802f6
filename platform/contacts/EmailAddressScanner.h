#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quenlet {

// Finds an e-mail address in free text: "Ann <ann@example.org>", "mailto:ann@example.org?cc=bob".
// Takes time in proportion to the text, whatever it holds, and looks at the first 64 KiB only.
// Stateless; any thread.
//
//   address   local "@" label ("." label)+
//   local     up to 64 bytes: letters, digits and most of "!#$%&'*+-^_~", with single dots between;
//             or the like in double quotes, with blanks and escapes
//   label     up to 63 letters, digits and hyphens; the last one does not begin with a digit
//
// Letters are those of any script. In scripts that set no blanks between words, an address in Latin
// letters ends where the other script begins, as in "邮箱是ann@example.org谢谢".
// What wraps an address in texts is no part of it, even where the grammar of mail would let it be:
// quotes, brackets, a "to=", a path, the full stop of a sentence. A text that is an address and
// nothing else is taken as it is, be it "a/b@example.org" or "a=b@example.org".
// What stands before the host of a URL is a user, who may be an address ("imap://ann%40example.org@
// imap.example.org"), and a password, which together with the host is none. Domains without a dot,
// numeric ones and address literals are left out: nobody is reached there by what we donate.
class EmailAddressScanner final {
 public:
  static constexpr std::size_t longestTextInBytes = std::size_t{1} << 16;

  // The first address, as it is written there, but for a full-width "@".
  [[nodiscard]] std::optional<std::string> firstEmailAddressInString(std::string_view text) const;
};

}  // namespace quenlet
