#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace quenlet {

// Builds one JSON text, front to back. The caller opens and closes containers in pairs and, inside
// an object, gives a key before each value; commas are added automatically. Bytes that are not
// valid UTF-8 become U+FFFD, so the result is always valid JSON. Control characters (C1 and DEL
// included), line separators and bidirectional controls are escaped: the text cannot affect the
// terminal that shows it. One thread at a time.
class JSONWriter final {
 public:
  JSONWriter() = default;
  // Appends to text that the caller has begun, such as the members of an object before this value.
  explicit JSONWriter(std::string begun) : output(std::move(begun)) {}

  JSONWriter& beginObject();
  JSONWriter& endObject();
  JSONWriter& beginArray();
  JSONWriter& endArray();
  JSONWriter& key(std::string_view name);
  JSONWriter& value(std::string_view text);
  JSONWriter& value(const char* text) { return value(std::string_view(text)); }
  JSONWriter& value(std::int64_t number);
  JSONWriter& value(int number) { return value(std::int64_t{number}); }
  // Non-finite numbers become null, which is the closest that JSON has.
  JSONWriter& value(double number);
  JSONWriter& value(bool flag);
  JSONWriter& null();

  [[nodiscard]] const std::string& text() const { return output; }
  [[nodiscard]] std::string take() && { return std::move(output); }

 private:
  static constexpr char isEmpty = 'e';
  static constexpr char isFilled = 'f';

  void separate();

  std::string output;
  // One character per open container: whether it already holds something. A string, as it needs no
  // memory of its own for as many levels as are usual.
  std::string filled{isEmpty};
  bool afterKey = false;
};

}  // namespace quenlet
