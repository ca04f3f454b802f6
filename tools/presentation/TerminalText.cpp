#include "tools/presentation/TerminalText.h"

#include <algorithm>
#include <optional>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

constexpr char32_t replacementCharacter = 0xFFFD;
constexpr std::string_view ellipsis = "…";

bool isSafe(char32_t character) {
  return !isControlOrLineBreak(character) && !isDirectional(character);
}

// The longest part at the front of `text` that is no wider than `width`.
std::string_view fittingPrefix(std::string_view text, std::size_t width) {
  std::string_view rest = text;
  std::size_t taken = 0;
  while (!rest.empty()) {
    std::string_view next = rest;
    const std::size_t step = displayWidth(takeCharacter(next).value_or(replacementCharacter));
    if (step > width - taken) break;
    taken += step;
    rest = next;
  }
  return text.substr(0, text.size() - rest.size());
}

// The longest part at the end of `text` that is no wider than `width`. It does not begin with what
// joins the character before it.
std::string_view fittingSuffix(std::string_view text, std::size_t width) {
  std::size_t excess = displayWidth(text) - std::min(width, displayWidth(text));
  while (!text.empty()) {
    std::string_view next = text;
    const std::size_t step = displayWidth(takeCharacter(next).value_or(replacementCharacter));
    if (excess == 0 && step > 0) break;
    excess -= std::min(step, excess);
    text = next;
  }
  return text;
}

// Where to end a line that could take in `fitting`, of a text that goes on behind it.
std::size_t lineEnd(std::string_view fitting, char next) {
  if (next == ' ') return fitting.size();
  if (const auto blank = fitting.rfind(' '); blank != std::string_view::npos) return blank;
  const auto mark = fitting.find_last_of("@.,:;/-_");
  // A short stump would make more lines than it is worth.
  if (mark != std::string_view::npos && mark + 1 > fitting.size() / 2) return mark + 1;
  return fitting.size();
}

void dropBlanks(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
}

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  shown.reserve(text.size());
  while (!text.empty()) {
    const std::optional<char32_t> character = takeCharacter(text);
    appendCharacter(shown, character && isSafe(*character) ? *character : replacementCharacter);
  }
  return shown;
}

std::string shortened(std::string_view text, std::size_t width) {
  if (displayWidth(text) <= width) return std::string(text);
  if (width == 0) return {};
  const std::size_t widthOfEnd = (width - 1) / 2;
  return std::string(fittingPrefix(text, width - 1 - widthOfEnd))
      .append(ellipsis)
      .append(fittingSuffix(text, widthOfEnd));
}

std::vector<std::string> wrapped(std::string_view text, std::size_t width) {
  std::vector<std::string> lines;
  while (true) {
    const std::string_view fitting = fittingPrefix(text, width);
    if (fitting.size() == text.size()) break;
    if (fitting.empty()) {
      static_cast<void>(takeCharacter(text));
      lines.emplace_back(ellipsis);
      continue;
    }
    std::string_view line = text.substr(0, lineEnd(fitting, text[fitting.size()]));
    text.remove_prefix(line.size());
    dropBlanks(text);
    line = line.substr(0, line.find_last_not_of(' ') + 1);
    if (!line.empty()) lines.emplace_back(line);
  }
  if (lines.empty() || !text.empty()) lines.emplace_back(text);
  return lines;
}

}  // namespace quenlet
