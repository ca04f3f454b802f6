#include "tools/presentation/Screen.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <optional>

#include "tools/presentation/TerminalText.h"

namespace quenlet {
namespace {

// Below that, breaking lines makes nothing more readable.
constexpr std::size_t leastWidth = 20;

std::string_view variable(const char* name) {
  const char* value = std::getenv(name);
  return value ? std::string_view(value) : std::string_view();
}

std::optional<std::size_t> widthByVariable() {
  const std::string_view text = variable("COLUMNS");
  std::size_t width = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), width);
  if (failure != std::errc() || end != text.data() + text.size() || width == 0) return std::nullopt;
  return width;
}

std::optional<std::size_t> widthOfTerminal(int descriptor) {
  winsize size{};
  if (::ioctl(descriptor, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return std::nullopt;
  return size.ws_col;
}

}  // namespace

Screen Screen::ofDescriptor(int descriptor) {
  Screen screen;
  std::optional<std::size_t> width = widthByVariable();
  if (!width) width = widthOfTerminal(descriptor);
  screen.width = std::max(width.value_or(usualWidth), leastWidth);
  screen.isColoured =
      ::isatty(descriptor) == 1 && variable("NO_COLOR").empty() && variable("TERM") != "dumb";
  return screen;
}

std::size_t Screen::roomBehind(std::size_t indentation) const {
  return width == unlimitedWidth ? width : width - std::min(indentation, width / 2);
}

std::string Screen::styled(std::string_view text, TextStyle style) const {
  if (!isColoured || style == TextStyle::plain || text.empty()) return std::string(text);
  const char* const start = style == TextStyle::bold ? "\x1B[1m" : "\x1B[2m";
  return std::string(start).append(text).append("\x1B[0m");
}

void Screen::writeParagraph(std::ostream& out, std::string_view text, std::size_t indentation,
                            std::size_t hanging) const {
  const std::size_t indented = indentation + hanging;
  // The first line is as wide as the others: it is not worth a special case.
  std::size_t blanks = indentation;
  for (const std::string& line : wrapped(text, roomBehind(indented))) {
    out << std::string(blanks, ' ') << line << "\n";
    blanks = indented;
  }
}

}  // namespace quenlet
