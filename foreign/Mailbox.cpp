#include "foreign/Mailbox.h"

#include <algorithm>
#include <utility>

#include "platform/contacts/EmailAddress.h"
#include "platform/contacts/EmailAddressScanner.h"
#include "platform/contacts/NameComponentsTokenizer.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

// Such an address is longer than mail can carry, such a name longer than a card shows.
constexpr std::size_t longestTextInBytes = 1000;

// What an address stands in: the text between the last angle brackets, or all of it.
std::string_view addressPart(std::string_view mailbox) {
  const std::string_view text = trimmed(mailbox);
  const std::size_t open = text.rfind('<');
  if (!text.ends_with('>') || open == text.npos) return text;
  return trimmed(text.substr(open + 1, text.size() - open - 2));
}

bool isPersonal(std::string_view address) {
  const std::string normal = EmailAddressNormalize(address);
  return normal.find('+') > normal.rfind('@') && normal.find("noreply") == normal.npos &&
         normal.find("no-reply") == normal.npos;
}

// Follows what encloses text in a list of mailboxes, character by character.
class Enclosure final {
 public:
  // Whether `character` stands outside of all.
  bool isOutside(char character) {
    if (isEscaped) {
      isEscaped = false;
    } else if (character == '\\') {
      isEscaped = true;
    } else if (character == '"' && comments == 0) {
      isQuoted = !isQuoted;
    } else if (!isQuoted) {
      follow(character);
    }
    return !isQuoted && comments == 0 && !isInBrackets && !isEscaped;
  }

 private:
  void follow(char character) {
    if (character == '(') ++comments;
    if (character == ')' && comments > 0) --comments;
    if (comments == 0 && character == '<') isInBrackets = true;
    if (comments == 0 && character == '>') isInBrackets = false;
  }

  std::size_t comments = 0;
  bool isQuoted = false;
  bool isInBrackets = false;
  bool isEscaped = false;
};

}  // namespace

bool isPlainText(std::string_view text) {
  if (text.size() > longestTextInBytes) return false;
  while (!text.empty()) {
    const auto character = takeCharacter(text);
    if (!character || isDirectional(*character)) return false;
    if (isControlOrLineBreak(*character) && *character != U'\n') return false;
  }
  return true;
}

std::optional<std::string> personalAddress(std::string_view mailbox) {
  const std::string_view part = addressPart(mailbox);
  if (part.size() > longestTextInBytes) return std::nullopt;
  auto address = EmailAddressScanner().firstEmailAddressInString(part);
  return address && *address == part && isPersonal(*address) ? address : std::nullopt;
}

std::optional<Name> fullName(std::string_view mailbox) {
  if (!isPlainText(mailbox) || mailbox.find('\n') != mailbox.npos) return std::nullopt;
  // Encoded for the header of a message: no name as it stands.
  if (mailbox.find("=?") != mailbox.npos) return std::nullopt;
  PersonNameComponents found = NameComponentsTokenizer::componentsFromString(mailbox);
  if (!found.givenName || !found.familyName) return std::nullopt;
  return Name{std::move(found.namePrefix), std::move(found.givenName),  std::move(found.middleName),
              std::move(found.familyName), std::move(found.nameSuffix), std::move(found.nickname)};
}

std::vector<std::string> splitMailboxes(std::string_view list) {
  std::vector<std::string> mailboxes(1);
  Enclosure enclosure;
  for (const char character : list) {
    if (enclosure.isOutside(character) && character == ',') {
      mailboxes.emplace_back();
    } else {
      mailboxes.back() += character;
    }
  }
  for (std::string& mailbox : mailboxes) mailbox = trimmed(mailbox);
  std::erase(mailboxes, "");
  return mailboxes;
}

}  // namespace quenlet
