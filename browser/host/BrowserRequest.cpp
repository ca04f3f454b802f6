#include "browser/host/BrowserRequest.h"

#include <cstddef>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>

namespace quenlet {
namespace {

// Takes the two members as the reader comes by; no tree is built. Each function says whether to go
// on: nothing nested does.
class RequestReader final : public nlohmann::json_sax<nlohmann::json> {
 public:
  [[nodiscard]] std::optional<std::int64_t> id() const { return number; }
  [[nodiscard]] const std::optional<std::string>& word() const { return asked; }

  bool null() override { return isInside; }
  bool boolean(bool) override { return isInside; }
  bool number_integer(std::int64_t) override { return isInside && name != "id"; }
  bool number_unsigned(std::uint64_t value) override {
    if (!isInside || name != "id") return isInside;
    if (number || value > std::numeric_limits<std::int64_t>::max()) return false;
    number = static_cast<std::int64_t>(value);
    return true;
  }
  bool number_float(double, const std::string&) override { return isInside && name != "id"; }
  bool binary(nlohmann::json::binary_t&) override { return false; }
  bool string(std::string& value) override {
    if (!isInside || name != "ask") return isInside && name != "id";
    if (asked) return false;
    asked = std::move(value);
    return true;
  }
  bool key(std::string& value) override {
    name = std::move(value);
    return true;
  }
  bool start_object(std::size_t) override { return !std::exchange(isInside, true); }
  bool end_object() override { return true; }
  bool start_array(std::size_t) override { return false; }
  bool end_array() override { return false; }
  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) override {
    return false;
  }

 private:
  bool isInside = false;
  std::string name;
  std::optional<std::int64_t> number;
  std::optional<std::string> asked;
};

}  // namespace

BrowserRequest BrowserRequest::parse(std::string_view text) {
  RequestReader reader;
  const bool isRead = nlohmann::json::sax_parse(text.begin(), text.end(), &reader);
  if (!isRead || !reader.id() || !reader.word()) return {};
  const std::string& word = *reader.word();
  return {word == "card"      ? Word::card
          : word == "changes" ? Word::changes
                              : Word::unknown,
          *reader.id()};
}

}  // namespace quenlet
