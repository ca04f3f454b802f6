#include "platform/contacts/VCardLineReader.h"

#include "platform/foundation/Text.h"

namespace quenlet {

VCardLineReader::VCardLineReader(std::string_view source) : rest(source) {
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (rest.starts_with(byteOrderMark)) rest.remove_prefix(byteOrderMark.size());
}

std::optional<VCardLineReader::Line> VCardLineReader::next() {
  while (!rest.empty()) {
    const std::string_view first = takeRawLine();
    currentNumber = rawLines;
    const std::string_view line = continues() ? unfolded(first) : first;
    if (!trimmed(line).empty()) return Line{line, currentNumber};
  }
  return std::nullopt;
}

std::string_view VCardLineReader::takeRawLine() {
  const std::size_t end = rest.find('\n');
  std::string_view line = rest.substr(0, end);
  rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
  while (line.ends_with('\r')) line.remove_suffix(1);
  ++rawLines;
  return line;
}

bool VCardLineReader::continues() const { return rest.starts_with(' ') || rest.starts_with('\t'); }

std::string_view VCardLineReader::unfolded(std::string_view first) {
  unfoldedLine = first;
  while (continues()) unfoldedLine += takeRawLine().substr(1);
  return unfoldedLine;
}

}  // namespace quenlet
