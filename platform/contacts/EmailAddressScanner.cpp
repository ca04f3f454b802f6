#include "platform/contacts/EmailAddressScanner.h"

#include <algorithm>
#include <charconv>

#include "platform/contacts/EmailCharacters.h"
#include "platform/foundation/Text.h"

// Each "@" is tried once, from left to right, until one has an address around it:
//
//     Write to (ann.lee@mail.example.org).
//               ^^^^^^^ ^^^^^^^^^^^^^^^^
//        2. local part, 1. domain,
//        read backward  read forward
//
// The domain comes first, because it decides whether the local part may have letters of a script
// without blanks. An "@" in the authority of a URL is different: there only the user before it can
// be an address. The time is linear, since a local part has at most 64 bytes and a domain never
// reaches beyond the next "@".
namespace quenlet {
namespace {

using email_characters::Character;
using email_characters::isASCIILetter;
using email_characters::isDigit;
using email_characters::isLetter;
using email_characters::isUnspaced;

constexpr std::size_t longestLocalPart = 64;
constexpr std::size_t longestLabel = 63;
constexpr std::size_t longestDomain = 253;
constexpr std::string_view localPunctuation = "!#$%&'*+-^_~.";
constexpr std::string_view marksAroundAddresses = "!#$%&'*-^~.";
// For a local part with nothing around it that could be mistaken for a part of it.
constexpr std::string_view plainPunctuation = "!#$%&'*+-/=?^_`{|}~.";
constexpr std::string_view fullWidthAt = "\uFF20";

bool isContinuationByte(char byte) { return (static_cast<unsigned char>(byte) & 0xC0) == 0x80; }

// The text behind one "@", read as a domain.
class DomainReader final {
 public:
  explicit DomainReader(std::string_view textBehindAt) : text(textBehindAt) {}

  // The domain at the start of the text, or an empty text.
  [[nodiscard]] std::string_view read() {
    std::size_t labels = 0;
    std::size_t end = 0;
    bool isNumeric = false;
    for (std::size_t begin = 0; readLabel(begin); begin = end + 1) {
      isNumeric = isDigit(static_cast<unsigned char>(text[begin]));
      end = labelEnd;
      ++labels;
      if (end == text.size() || text[end] != '.') break;
    }
    if (labels < 2 || isNumeric || isTooLong || isCutOff(end)) return {};
    return text.substr(0, end);
  }

  // Whether the domain has letters of a script without blanks; then the local part may have them
  // too.
  [[nodiscard]] bool isOfUnspacedScript() const { return hasUnspaced; }

 private:
  // Sets labelEnd to the end of the label at `begin`, without trailing hyphens. False when there is
  // none.
  bool readLabel(std::size_t begin) {
    labelEnd = begin;
    std::size_t length = 0;
    bool mayBeUnspaced = true;
    for (std::size_t position = begin;;) {
      const Character character(text.substr(position));
      if (character.value == '-') {
        if (length == 0) return false;
      } else if (isLetter(character.value) || isDigit(character.value)) {
        const bool unspaced = isUnspaced(character.value);
        if (length == 0) mayBeUnspaced = unspaced;
        if (unspaced && !mayBeUnspaced) break;
        hasUnspaced = hasUnspaced || unspaced;
        labelEnd = position + character.size;
      } else {
        break;
      }
      position += character.size;
      ++length;
      ++domainLength;
    }
    isTooLong = isTooLong || length > longestLabel || ++domainLength > longestDomain + 1;
    return labelEnd > begin;
  }

  // "a@example.sub_domain.org" is not an address, and its beginning must not pass for one.
  [[nodiscard]] bool isCutOff(std::size_t end) const {
    if (end + 1 >= text.size() || text[end] != '_') return false;
    const char32_t next = Character(text.substr(end + 1)).value;
    return isLetter(next) || isDigit(next);
  }

  const std::string_view text;
  std::size_t labelEnd = 0;
  std::size_t domainLength = 0;
  bool hasUnspaced = false;
  bool isTooLong = false;
};

bool isLocalByte(char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= 0x80 || isASCIILetter(value) || isDigit(value) ||
         localPunctuation.find(byte) != std::string_view::npos;
}

// The local part without quotes at the end of `text`, or an empty text.
std::string_view plainLocalPart(std::string_view text, bool mayBeUnspaced) {
  std::size_t begin = text.size();
  while (begin > 0 && text.size() - begin < longestLocalPart && isLocalByte(text[begin - 1])) {
    --begin;
  }
  // If the limit ended the search, the part is too long, unless a separator turns up within it.
  bool isComplete = begin == 0 || (!isLocalByte(text[begin - 1]) && text[begin - 1] != '@');
  // The limit may have cut a character in two.
  while (begin < text.size() && isContinuationByte(text[begin])) ++begin;
  for (std::size_t position = begin; position < text.size();) {
    const Character character(text.substr(position));
    position += character.size;
    const bool isPlain = character.value < 0x80 && character.value != 0;
    const bool isPart =
        isPlain || (isLetter(character.value) && (mayBeUnspaced || !isUnspaced(character.value)));
    // In "see...ann@example.org" the address begins behind the dots.
    const bool isEllipsis = text.substr(0, position).ends_with("...");
    if (isPart && !isEllipsis) continue;
    begin = position;
    isComplete = true;
  }
  if (!isComplete) return {};
  const std::string_view part = text.substr(begin);
  const std::size_t first = part.find_first_not_of(marksAroundAddresses);
  return first == std::string_view::npos ? std::string_view() : part.substr(first);
}

// The same for a local part in double quotes; `text` ends with the closing one.
std::string_view quotedLocalPart(std::string_view text) {
  const std::size_t limit = std::min(text.size(), longestLocalPart);
  for (std::size_t size = 2; size <= limit; ++size) {
    const std::size_t begin = text.size() - size;
    if (static_cast<unsigned char>(text[begin]) < 0x20) return {};
    if (text[begin] != '"') continue;
    // A quote behind an odd number of backslashes is escaped and does not open the part.
    const std::size_t before = text.substr(0, begin).find_last_not_of('\\');
    const std::size_t escapes = begin - (before == std::string_view::npos ? 0 : before + 1);
    if (escapes % 2 == 0) return size > 2 ? text.substr(begin) : std::string_view();
  }
  return {};
}

std::string_view localPart(std::string_view text, bool mayBeUnspaced) {
  if (text.ends_with('"')) return quotedLocalPart(text);
  const std::string_view part = plainLocalPart(text, mayBeUnspaced);
  const bool hasStrayDot = part.ends_with('.') || part.find("..") != std::string_view::npos;
  return hasStrayDot ? std::string_view() : part;
}

bool isAddressAlone(std::string_view text) {
  const std::size_t at = text.find('@');
  if (at == 0 || at == std::string_view::npos || at > longestLocalPart) return false;
  const std::string_view local = text.substr(0, at);
  const bool isPlain = std::all_of(local.begin(), local.end(), [](char c) {
    const auto value = static_cast<unsigned char>(c);
    return isASCIILetter(value) || isDigit(value) || plainPunctuation.find(c) != std::string::npos;
  });
  const bool hasStrayDot =
      local.starts_with('.') || local.ends_with('.') || local.find("..") != std::string_view::npos;
  const std::string_view domain = text.substr(at + 1);
  return isPlain && !hasStrayDot && DomainReader(domain).read().size() == domain.size() &&
         !domain.empty();
}

// Replaces "%40" and the like; a malformed escape stays as it is.
std::string percentDecoded(std::string_view text) {
  std::string decoded;
  for (; !text.empty(); text.remove_prefix(1)) {
    int byte = 0;
    const char* const end = text.data() + std::min<std::size_t>(text.size(), 3);
    const bool isEscape = text.front() == '%' && text.size() > 2 &&
                          std::from_chars(text.data() + 1, end, byte, 16).ptr == end && byte > 0;
    decoded += isEscape ? static_cast<char>(byte) : text.front();
    if (isEscape) text.remove_prefix(2);
  }
  return decoded;
}

// Moves through a text from left to right and knows when it is in the authority of a URL: behind
// "://", up to the path. There, user and password stand before an "@" and the host behind it.
class AuthorityFollower final {
 public:
  explicit AuthorityFollower(std::string_view wholeText) : text(wholeText) {}

  void moveTo(std::size_t end) {
    for (; position < end; ++position) {
      const char c = text[position];
      if (c == '/' && text.substr(0, position + 1).ends_with("://")) {
        begin = position + 1;
      } else if (static_cast<unsigned char>(c) <= ' ' ||
                 std::string_view("/?#<>").find(c) != npos) {
        begin = npos;
      }
    }
  }
  [[nodiscard]] bool isInside() const { return begin != npos; }
  // The user before the position, if it is an address.
  [[nodiscard]] std::optional<std::string> userAddress() const {
    // Escapes can make it three times as long.
    constexpr std::size_t longest = 3 * (longestLocalPart + 1 + longestDomain);
    if (position - begin > longest) return std::nullopt;
    const std::string_view information = text.substr(begin, position - begin);
    std::string user = percentDecoded(information.substr(0, information.find(':')));
    if (isAddressAlone(user)) return user;
    return std::nullopt;
  }

 private:
  static constexpr std::size_t npos = std::string_view::npos;

  const std::string_view text;
  std::size_t position = 0;
  std::size_t begin = npos;
};

std::string withPlainAts(std::string_view text) {
  std::string plain;
  for (std::size_t at = text.find(fullWidthAt); at != text.npos; at = text.find(fullWidthAt)) {
    plain.append(text.substr(0, at)) += '@';
    text.remove_prefix(at + fullWidthAt.size());
  }
  return plain.append(text);
}

}  // namespace

std::optional<std::string> EmailAddressScanner::firstEmailAddressInString(
    std::string_view written) const {
  const bool isCut = written.size() > longestTextInBytes;
  const std::string plain = withPlainAts(written.substr(0, longestTextInBytes));
  const std::string_view text = plain;
  if (!isCut && isAddressAlone(trimmed(text))) return std::string(trimmed(text));
  AuthorityFollower authority(text);
  // Behind the last "@" of a URL; a quoted local part must not reach back over that.
  std::size_t begin = 0;
  for (std::size_t at = text.find('@'); at != std::string_view::npos; at = text.find('@', at + 1)) {
    authority.moveTo(at);
    if (authority.isInside()) {
      if (auto user = authority.userAddress()) return user;
      begin = at + 1;
      continue;
    }
    DomainReader reader(text.substr(at + 1));
    const std::string_view domain = reader.read();
    // A domain at the end of a text that was cut may go on there.
    const bool isWhole = !isCut || at + 1 + domain.size() < text.size();
    if (domain.empty() || !isWhole) continue;
    const std::string_view local = localPart(text.substr(0, at), reader.isOfUnspacedScript());
    if (local.empty() || local.size() > at - begin) continue;
    return std::string(local).append("@").append(domain);
  }
  return std::nullopt;
}

}  // namespace quenlet
