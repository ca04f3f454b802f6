#include "donors/browser/FirefoxAddresses.h"

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <utility>

namespace quenlet {
namespace {

// Takes what it needs as the reader comes by, so that no tree of the file is built. Each function
// says whether to go on. Depth 1 is within the whole, 2 within the list, 3 within an address.
class AddressReader final : public nlohmann::json_sax<nlohmann::json> {
 public:
  [[nodiscard]] bool isComplete() const { return hasRoot && depth == 0 && hasOnlyRecords; }
  [[nodiscard]] std::vector<FirefoxAddresses::Record> takeRecords() { return std::move(records); }

  bool null() override { return scalar(); }
  bool number_integer(std::int64_t) override { return scalar(); }
  bool number_unsigned(std::uint64_t) override { return scalar(); }
  bool number_float(double, const std::string&) override { return scalar(); }
  bool binary(nlohmann::json::binary_t&) override { return scalar(); }
  bool boolean(bool value) override {
    if (isInRecord() && name == "deleted") isDeleted = value;
    return scalar();
  }
  bool string(std::string& value) override {
    if (isInRecord()) record.insert_or_assign(name, std::move(value));
    return scalar();
  }
  bool key(std::string& value) override {
    if (depth == 1) isInAddresses = value == "addresses";
    name = std::move(value);
    return true;
  }
  bool start_object(std::size_t) override {
    if (depth == 0) hasRoot = true;
    if (depth == 1 && isInAddresses) hasOnlyRecords = false;
    if (depth == 2 && isInAddresses) {
      record.clear();
      isDeleted = false;
    }
    return descend();
  }
  bool end_object() override {
    --depth;
    if (depth == 2 && isInAddresses && !isDeleted) records.push_back(std::move(record));
    return true;
  }
  bool start_array(std::size_t) override {
    if (depth == 2 && isInAddresses) hasOnlyRecords = false;
    return descend();
  }
  bool end_array() override {
    --depth;
    return true;
  }
  bool parse_error(std::size_t, const std::string&, const nlohmann::json::exception&) override {
    return false;
  }

 private:
  // Firefox nests no deeper than 4.
  static constexpr std::size_t deepest = 32;

  [[nodiscard]] bool isInRecord() const { return depth == 3 && isInAddresses; }
  bool descend() { return ++depth <= deepest; }
  bool scalar() {
    if ((depth == 1 || depth == 2) && isInAddresses) hasOnlyRecords = false;
    return true;
  }

  std::size_t depth = 0;
  bool hasRoot = false;
  bool hasOnlyRecords = true;
  bool isInAddresses = false;
  bool isDeleted = false;
  std::string name;
  FirefoxAddresses::Record record;
  std::vector<FirefoxAddresses::Record> records;
};

}  // namespace

Result<std::vector<FirefoxAddresses::Record>> FirefoxAddresses::parse(std::string_view text) {
  using Records = Result<std::vector<Record>>;
  AddressReader reader;
  const bool isJSON = nlohmann::json::sax_parse(text.begin(), text.end(), &reader);
  if (!isJSON || !reader.isComplete()) {
    return Records::failure(
        makeError(PosixErrorDomain, EINVAL,
                  isJSON ? "it holds no list of addresses" : "it is cut short or damaged"));
  }
  return Records::success(reader.takeRecords());
}

}  // namespace quenlet
