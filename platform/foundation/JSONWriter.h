#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quenlet {

// Builds one JSON text, front to back. The caller opens and closes containers in pairs and, inside
// an object, gives a key before each value; commas are put in by themselves. Text that is not valid
// UTF-8 has its bad bytes replaced by U+FFFD, so that the result is always valid JSON. Control
// characters, C1 and DEL included, line separators and bidirectional controls are escaped, so that
// the text does nothing to the terminal that shows it.
// One thread at a time.
class JSONWriter final {
 public:
  // Makes room for a text of about that size, so that it need not grow.
  explicit JSONWriter(std::size_t expectedSizeInBytes = 0) { output.reserve(expectedSizeInBytes); }

  JSONWriter& beginObject();
  JSONWriter& endObject();
  JSONWriter& beginArray();
  JSONWriter& endArray();
  JSONWriter& key(std::string_view name);
  JSONWriter& value(std::string_view text);
  JSONWriter& value(const char* text) { return value(std::string_view(text)); }
  JSONWriter& value(std::int64_t number);
  JSONWriter& value(int number) { return value(std::int64_t{number}); }
  // Non-finite numbers become null, as JSON has no form for them.
  JSONWriter& value(double number);
  JSONWriter& value(bool flag);
  JSONWriter& null();

  [[nodiscard]] const std::string& text() const { return output; }
  [[nodiscard]] std::string take() && { return std::move(output); }

 private:
  void separate();

  std::string output;
  // One entry an open container: whether it holds something already.
  std::vector<bool> filled{false};
  bool afterKey = false;
};

}  // namespace quenlet
