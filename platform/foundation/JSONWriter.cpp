#include "platform/foundation/JSONWriter.h"
#include "platform/foundation/NumberText.h"
#include "platform/foundation/Text.h"

#include <array>
#include <cmath>

namespace quenlet {
namespace {

// By byte: whether it stands for itself.
constexpr std::array<bool, 256> plainBytes = [] {
  std::array<bool, 256> plain{};
  for (unsigned byte = 0x20; byte < 0x7F; ++byte) plain[byte] = byte != '"' && byte != '\\';
  return plain;
}();

// The length of the part in front that needs no escape.
std::size_t plainLengthOf(std::string_view text) {
  std::size_t length = 0;
  while (length < text.size() && plainBytes[static_cast<unsigned char>(text[length])]) ++length;
  return length;
}

// Characters that a terminal, a line reader or an old script engine may not treat as plain text.
// All of them are below U+10000, so one \u escape is enough.
bool needsEscape(char32_t character) {
  return character <= 0x7F || isControlOrLineBreak(character) || isDirectional(character);
}

void appendEscape(std::string& output, char32_t character) {
  constexpr std::string_view shortForms = "\"\"\\\\\bb\ff\nn\rr\tt";
  for (std::size_t i = 0; i < shortForms.size(); i += 2) {
    if (static_cast<char32_t>(shortForms[i]) == character) {
      output += {'\\', shortForms[i + 1]};
      return;
    }
  }
  constexpr std::string_view digits = "0123456789abcdef";
  output += "\\u";
  for (const int shift : {12, 8, 4, 0}) output += digits[character >> shift & 15];
}

void appendQuoted(std::string& output, std::string_view text) {
  constexpr char32_t replacement = 0xFFFD;
  output += '"';
  while (!text.empty()) {
    const std::size_t plain = plainLengthOf(text);
    output += text.substr(0, plain);
    text.remove_prefix(plain);
    if (text.empty()) break;
    const char32_t character = takeCharacter(text).value_or(replacement);
    if (needsEscape(character)) {
      appendEscape(output, character);
    } else {
      appendCharacter(output, character);
    }
  }
  output += '"';
}

}  // namespace

void JSONWriter::separate() {
  if (!afterKey && filled.back() == isFilled) output += ',';
  filled.back() = isFilled;
  afterKey = false;
}

JSONWriter& JSONWriter::beginObject() {
  separate();
  output += '{';
  filled.push_back(isEmpty);
  return *this;
}

JSONWriter& JSONWriter::endObject() {
  output += '}';
  filled.pop_back();
  return *this;
}

JSONWriter& JSONWriter::beginArray() {
  separate();
  output += '[';
  filled.push_back(isEmpty);
  return *this;
}

JSONWriter& JSONWriter::endArray() {
  output += ']';
  filled.pop_back();
  return *this;
}

JSONWriter& JSONWriter::key(std::string_view name) {
  separate();
  appendQuoted(output, name);
  output += ':';
  afterKey = true;
  return *this;
}

JSONWriter& JSONWriter::value(std::string_view text) {
  separate();
  appendQuoted(output, text);
  return *this;
}

JSONWriter& JSONWriter::value(std::int64_t number) {
  separate();
  appendNumber(output, number);
  return *this;
}

JSONWriter& JSONWriter::value(double number) {
  if (!std::isfinite(number)) return null();
  separate();
  appendNumber(output, number);
  return *this;
}

JSONWriter& JSONWriter::value(bool flag) {
  separate();
  output += flag ? "true" : "false";
  return *this;
}

JSONWriter& JSONWriter::null() {
  separate();
  output += "null";
  return *this;
}

}  // namespace quenlet
