#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace quenlet {

// Takes the entries of dictionaries off the front of a text that PropertyListWriter wrote, in the
// order in which they stand there, without a tree. Each operation gives nothing when the next entry
// has another key, since entries may be missing. At an entry that the writer would not have written
// so, or a dictionary that does not end where it must, the rest of the text is dropped: nothing
// else can be taken then, and the last step fails. One thread at a time.
class PropertyListScanner final {
 public:
  // Takes the entries off `fragment` itself.
  explicit PropertyListScanner(std::string_view& fragment) : rest(fragment) {}

  [[nodiscard]] bool beginDictionary() { return take("<dict>\n"); }
  [[nodiscard]] bool beginDictionary(std::string_view key) { return takeKey(key, "<dict>\n"); }
  [[nodiscard]] bool endDictionary();

  [[nodiscard]] std::optional<std::string> string(std::string_view key);
  [[nodiscard]] std::optional<std::string> data(std::string_view key);
  [[nodiscard]] std::optional<std::int64_t> integer(std::string_view key);
  [[nodiscard]] std::optional<double> real(std::string_view key);

 private:
  bool take(std::string_view expected) {
    if (!rest.starts_with(expected)) return false;
    rest.remove_prefix(expected.size());
    return true;
  }
  bool takeKey(std::string_view key, std::string_view openingTag);
  std::string_view takeUpToTag();
  template <typename Number>
  std::optional<Number> takeNumber(std::string_view closingTag);
  std::nullopt_t fail();

  std::string_view& rest;
};

}  // namespace quenlet
