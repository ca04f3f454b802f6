#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <string_view>

namespace quenlet {

enum class TextStyle { plain, bold, dim };

// What output is made for: how wide its lines may be, and whether they are coloured. A value.
struct Screen final {
  static constexpr std::size_t unlimitedWidth = static_cast<std::size_t>(-1);
  static constexpr std::size_t usualWidth = 80;

  // In columns.
  std::size_t width = usualWidth;
  bool isColoured = false;

  // The width is that of the variable COLUMNS, else of the terminal, else the usual one. Coloured
  // on a terminal unless NO_COLOR is set or TERM is "dumb".
  [[nodiscard]] static Screen ofDescriptor(int descriptor);

  // What an indentation leaves of the width; at least half of it.
  [[nodiscard]] std::size_t roomBehind(std::size_t indentation) const;
  // `text` for this screen in that style; plain where nothing is coloured.
  [[nodiscard]] std::string styled(std::string_view text, TextStyle style) const;
  // Writes text that is safe for a terminal, in as many lines as it takes. All lines but the first
  // begin with `hanging` blanks more than the `indentation` of the first.
  void writeParagraph(std::ostream& out, std::string_view text, std::size_t indentation = 0,
                      std::size_t hanging = 0) const;
};

}  // namespace quenlet
