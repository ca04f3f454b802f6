#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quenlet {

// Gives out the content lines of a vCard text one by one, unfolded, without line ends, blank lines
// passed over. A fold may stand between any two bytes, so that UTF-8 is to be checked on what
// `next` gives. Copies only folded lines. For one thread.
class VCardLineReader final {
 public:
  struct Line final {
    std::string_view text;   // good until the next call of `next`
    std::size_t number = 0;  // of its first line in the text, from 1
  };

  // `source` outlives the reader.
  explicit VCardLineReader(std::string_view source);

  [[nodiscard]] std::optional<Line> next();
  // The number of the last line given out, 0 before the first.
  [[nodiscard]] std::size_t lineNumber() const { return currentNumber; }

 private:
  [[nodiscard]] std::string_view takeRawLine();
  [[nodiscard]] bool continues() const;
  [[nodiscard]] std::string_view unfolded(std::string_view first);

  std::string_view rest;
  std::string unfoldedLine;
  std::size_t rawLines = 0;
  std::size_t currentNumber = 0;
};

}  // namespace quenlet
