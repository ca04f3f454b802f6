#include "platform/contacts/VCardLineReader.h"

#include <algorithm>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

bool isBase64(std::string_view line) {
  const auto isDigit = [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
           c == '/' || c == '=';
  };
  return !line.empty() && std::all_of(line.begin(), line.end(), isDigit);
}

bool isEndOfCard(std::string_view line) {
  constexpr std::string_view end = "end:vcard";
  line = trimmed(line);
  return line.size() == end.size() && lowercased(line) == end;
}

}  // namespace

VCardLineReader::VCardLineReader(std::string_view source)
    : rest(source), lineEnd(source.find('\n') == std::string_view::npos ? '\r' : '\n') {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (rest.starts_with(byteOrderMark)) rest.remove_prefix(byteOrderMark.size());
}

std::optional<VCardLineReader::Line> VCardLineReader::next() {
  while (!rest.empty()) {
    const std::string_view first = takeRawLine();
    currentNumber = rawLines;
    form = Form::unknown;
    searchedBytes = 0;
    const std::string_view line = continues(first) ? joined(first) : first;
    if (!trimmed(line).empty()) return Line{line, currentNumber};
  }
  return std::nullopt;
}

std::string_view VCardLineReader::peekRawLine() const {
  std::string_view line = rest.substr(0, rest.find(lineEnd));
  while (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

std::string_view VCardLineReader::takeRawLine() {
  const std::string_view line = peekRawLine();
  rest.remove_prefix(std::min(rest.find(lineEnd, line.size()), rest.size() - 1) + 1);
  ++rawLines;
  return line;
}

bool VCardLineReader::isFolded() const { return rest.starts_with(' ') || rest.starts_with('\t'); }

bool VCardLineReader::endsSoftly(std::string_view line) {
  // A stray "=" on the last property must not swallow the END of the card.
  return line.ends_with('=') && formOf(line) == Form::quotedPrintable &&
         !isEndOfCard(peekRawLine());
}

bool VCardLineReader::continues(std::string_view line) {
  if (rest.empty()) return false;
  return isFolded() || endsSoftly(line) ||
         (formOf(line) == Form::base64 && isBase64(peekRawLine()));
}

std::string_view VCardLineReader::joined(std::string_view first) {
  joinedLine = first;
  while (continues(joinedLine)) {
    // A blank behind a soft line break belongs to the text.
    const bool isSoft = endsSoftly(joinedLine);
    if (isSoft) joinedLine.pop_back();
    const bool dropsBlank = isFolded() && !isSoft && !blanksOfFoldsCount;
    joinedLine += takeRawLine().substr(dropsBlank ? 1 : 0);
  }
  return joinedLine;
}

// Decided by the parameters, once the line is known up to its colon.
VCardLineReader::Form VCardLineReader::formOf(std::string_view line) {
  if (form != Form::unknown) return form;
  // Only in what the last fold has added: searching from the start would take quadratic time.
  const std::size_t colon = line.find(':', searchedBytes);
  searchedBytes = line.size();
  if (colon == std::string_view::npos) return form;
  const std::string parameters = lowercased(line.substr(0, colon));
  const auto say = [&parameters](const char* word) {
    return parameters.find(word) != std::string::npos;
  };
  form = say(";quoted-printable") || say("=quoted-printable")    ? Form::quotedPrintable
         : say(";base64") || say("=base64") || say("encoding=b") ? Form::base64
                                                                 : Form::plain;
  return form;
}

}  // namespace quenlet
