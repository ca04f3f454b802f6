#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quenlet {

// Gives out the content lines of a vCard text one by one, unfolded, without line ends; skips blank
// lines. A line ends with LF, CRLF or, in a text without LF, CR. It continues in the next one if
//
//   - the next one begins with a blank, or
//   - it is quoted-printable and ends with "=", or
//   - both are base64, as old programs write it.
//
// A fold may come between any two bytes, even of one character: check UTF-8 in the result of
// next(). Copies only lines that are in pieces. For one thread.
class VCardLineReader final {
 public:
  struct Line final {
    std::string_view text;   // good until the next call of `next`
    std::size_t number = 0;  // of its first line in the text, from 1
  };

  // `source` outlives the reader.
  explicit VCardLineReader(std::string_view source);

  // Whether the blank at the start of a continuation belongs to the text, as in vCard 2.1, which
  // folds only between words. False at first.
  void setBlanksOfFoldsCount(bool count) { blanksOfFoldsCount = count; }
  [[nodiscard]] std::optional<Line> next();
  // The number of the last line given out, 0 before the first.
  [[nodiscard]] std::size_t lineNumber() const { return currentNumber; }

 private:
  enum class Form { unknown, plain, quotedPrintable, base64 };

  [[nodiscard]] std::string_view peekRawLine() const;
  [[nodiscard]] std::string_view takeRawLine();
  [[nodiscard]] bool isFolded() const;
  // Whether `line` is quoted-printable and ends with a soft line break ("=").
  [[nodiscard]] bool endsSoftly(std::string_view line);
  // Whether the next raw line belongs to `line`.
  [[nodiscard]] bool continues(std::string_view line);
  [[nodiscard]] std::string_view joined(std::string_view first);
  [[nodiscard]] Form formOf(std::string_view line);

  std::string_view rest;
  const char lineEnd;
  bool blanksOfFoldsCount = false;
  std::string joinedLine;
  Form form = Form::unknown;      // of the line in hand
  std::size_t searchedBytes = 0;  // of the line in hand, for the end of its parameters
  std::size_t rawLines = 0;
  std::size_t currentNumber = 0;
};

}  // namespace quenlet
