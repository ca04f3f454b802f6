#include "platform/foundation/XMLGuard.h"

#include <algorithm>
#include <string>

#include "platform/foundation/PropertyListError.h"
#include "platform/foundation/XMLText.h"

namespace quenlet {

using enum PropertyListErrorCode;

namespace {
constexpr std::size_t nowhere = std::string_view::npos;

// Memory that the library takes for a node and for an attribute, and the most that the object made
// from an element takes, as an entry of a dictionary.
constexpr std::size_t bytesOfNode = 64;
constexpr std::size_t bytesOfAttribute = 40;
constexpr std::size_t bytesOfObject = 120;
// Eight with the text itself and the library's copy of it.
constexpr std::size_t mostBytesForAByte = 6;
constexpr std::size_t bytesForAnyText = std::size_t{4} << 20;
}  // namespace

ErrorPtr XMLGuard::check() {
  if (ErrorPtr error = checkEncoding()) return error;
  if (const std::size_t offset = findForbiddenCharacter(document); offset != nowhere) {
    return makePropertyListError(invalidText, "no UTF-8, or a forbidden character,", offset);
  }
  while ((position = document.find('<', position)) != nowhere) {
    if (ErrorPtr error = passMarkup()) return error;
  }
  if (depth == 0) return nullptr;
  return makePropertyListError(malformedMarkup, "an element is not closed");
}

// UTF-16 and UTF-32 show in the first bytes: a byte order mark, or a zero beside the "<".
ErrorPtr XMLGuard::checkEncoding() const {
  using std::literals::string_view_literals::operator""sv;
  for (const std::string_view start : {"\xFF\xFE"sv, "\xFE\xFF"sv, "<\0"sv, "\0<"sv, "\0\0"sv}) {
    if (document.starts_with(start)) {
      return makePropertyListError(unsupportedEncoding, "the encoding is not UTF-8");
    }
  }
  return nullptr;
}

ErrorPtr XMLGuard::passMarkup() {
  const std::string_view rest = document.substr(position);
  // Either cuts the text around it into pieces, and each piece is a node.
  const bool isInstruction = rest.starts_with(instructionStart);
  if (isInstruction || rest.starts_with(commentStart)) {
    if (ErrorPtr error = charge(2 * bytesOfNode)) return error;
    return isInstruction ? passTo("?>", instructionStart.size())
                         : passTo("-->", commentStart.size());
  }
  if (rest.starts_with(sectionStart)) {
    // The section and the pieces of text on both sides.
    if (ErrorPtr error = charge(3 * bytesOfNode)) return error;
    return passTo("]]>", sectionStart.size());
  }
  if (rest.starts_with("<!")) return passDocumentType();
  return passTag();
}

ErrorPtr XMLGuard::passTo(std::string_view end, std::size_t openingLength) {
  const std::size_t found = document.find(end, position + openingLength);
  if (found == nowhere) return malformed();
  position = found + end.size();
  return nullptr;
}

ErrorPtr XMLGuard::passDocumentType() {
  const std::size_t end = findOutsideQuotes("[<>", position + 1);
  if (end == nowhere) return malformed();
  if (document[end] != '>') {
    return makePropertyListError(documentTypeWithContent, "a document type with declarations", end);
  }
  position = end + 1;
  return nullptr;
}

ErrorPtr XMLGuard::passTag() {
  const std::size_t end = findOutsideQuotes("<>", position + 1);
  if (end == nowhere || document[end] != '>') return malformed();
  const bool closes = document[position + 1] == '/';
  const bool isEmpty = document[end - 1] == '/';
  if (closes) {
    if (--depth < 0) return malformed();
  } else if (!isEmpty && ++depth > maximumDepth) {
    return makePropertyListError(nestingTooDeep, "elements are nested too deeply", position);
  }
  if (ErrorPtr error = charge(closes ? 0 : bytesOfTag(position, end))) return error;
  position = end + 1;
  return nullptr;
}

// The position of the first of `characters` outside quoted values.
std::size_t XMLGuard::findOutsideQuotes(std::string_view characters, std::size_t from) const {
  const std::string stops = std::string(characters) + "\"'";
  while (true) {
    from = document.find_first_of(stops, from);
    if (from == nowhere || characters.find(document[from]) != nowhere) return from;
    from = document.find(document[from], from + 1);
    if (from == nowhere) return nowhere;
    ++from;
  }
}

// Counts every "=", including those in values: at worst, too much is charged.
std::size_t XMLGuard::bytesOfTag(std::size_t begin, std::size_t end) const {
  const std::string_view tag = document.substr(begin, end - begin);
  const auto attributes = static_cast<std::size_t>(std::count(tag.begin(), tag.end(), '='));
  return nodesOfElement * bytesOfNode + attributes * bytesOfAttribute + bytesOfObject;
}

ErrorPtr XMLGuard::charge(std::size_t bytes) {
  chargedBytes += bytes;
  if (chargedBytes <= bytesForAnyText + mostBytesForAByte * document.size()) return nullptr;
  return makePropertyListError(tooLarge, "so many elements for so little text", position);
}

ErrorPtr XMLGuard::malformed() const {
  return makePropertyListError(malformedMarkup, "malformed markup", position);
}

}  // namespace quenlet
