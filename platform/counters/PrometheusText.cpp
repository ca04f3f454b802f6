#include "platform/counters/PrometheusText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "platform/foundation/NumberText.h"

namespace quenlet {
namespace {

using CounterValue = CounterValues::mapped_type;

constexpr std::string_view helpOfKey = "The counter ";

bool isKeyCharacter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '.' || c == '-';
}

bool isKey(std::string_view key) {
  return !key.empty() && key.front() >= 'a' && key.front() <= 'z' &&
         std::all_of(key.begin(), key.end(), isKeyCharacter);
}

std::string nameOfKey(std::string_view key) {
  std::string name(key);
  std::replace_if(
      name.begin(), name.end(), [](char c) { return c == '.' || c == '-'; }, '_');
  return name;
}

std::string nameOfGauge(std::string_view key) {
  std::string name = nameOfKey(key);
  const bool isReserved = name.ends_with("_count") || name.ends_with("_sum") ||
                          name.ends_with("_total") || name.ends_with("_bucket");
  return isReserved ? name + "_value" : name;
}

struct Writer final {
  std::string& text;
  std::string_view key;

  void operator()(std::int64_t number) const {
    const std::string name = nameOfGauge(key);
    writeHead(name, "gauge");
    writeSample(name, number);
  }
  void operator()(const CounterDistribution& samples) const {
    const std::string name = nameOfKey(key);
    writeHead(name, "summary");
    writeSample(name + "_count", samples.count);
    writeSample(name + "_sum", samples.sum);
  }

 private:
  void writeHead(const std::string& name, const char* type) const {
    text.append("# HELP ").append(name).append(" ").append(helpOfKey).append(key);
    text.append("\n# TYPE ").append(name).append(" ").append(type).append("\n");
  }
  template <typename Number>
  void writeSample(const std::string& name, Number number) const {
    text.append(name).append(" ");
    appendNumber(text, number);
    text.append("\n");
  }
};

// Takes lines off the front of a text.
struct LineReader final {
  std::string_view rest;
  std::int64_t number = 0;

  // The rest of the next line after `beginning`. Nothing when the line begins with something else,
  // or does not end in a line feed.
  std::optional<std::string_view> take(std::string_view beginning) {
    ++number;
    const std::size_t end = rest.find('\n');
    if (end == std::string_view::npos || !rest.substr(0, end).starts_with(beginning)) {
      return std::nullopt;
    }
    const std::string_view line = rest.substr(beginning.size(), end - beginning.size());
    rest.remove_prefix(end + 1);
    return line;
  }

  template <typename Number>
  std::optional<Number> takeSample(const std::string& name) {
    const auto digits = take(name + " ");
    if (!digits) return std::nullopt;
    Number sample{};
    const char* end = digits->data() + digits->size();
    const auto parsed = std::from_chars(digits->data(), end, sample);
    if (parsed.ec != std::errc() || parsed.ptr != end) return std::nullopt;
    return sample;
  }
};

std::optional<CounterValue> readGauge(LineReader& lines, std::string_view key) {
  const std::string name = nameOfGauge(key);
  if (const auto number = lines.takeSample<std::int64_t>(name)) return CounterValue(*number);
  return std::nullopt;
}

std::optional<CounterValue> readSummary(LineReader& lines, std::string_view key) {
  const std::string name = nameOfKey(key);
  const auto count = lines.takeSample<std::uint64_t>(name + "_count");
  if (!count || *count > CounterDistribution::largestCount) return std::nullopt;
  const auto sum = lines.takeSample<double>(name + "_sum");
  if (!sum || !std::isfinite(*sum)) return std::nullopt;
  return CounterValue(CounterDistribution{*count, *sum});
}

// Reads the lines of one counter into `values`; false at a wrong line. The name is computed from
// the key and compared, so that only the form that write() makes is accepted.
bool readCounter(LineReader& lines, CounterValues& values) {
  const auto help = lines.take("# HELP ");
  if (!help) return false;
  const std::size_t blank = std::min(help->find(' '), help->size());
  const std::string_view name = help->substr(0, blank);
  std::string_view key = help->substr(std::min(blank + 1, help->size()));
  if (!key.starts_with(helpOfKey)) return false;
  key.remove_prefix(helpOfKey.size());
  if (!isKey(key)) return false;
  const auto type = lines.take("# TYPE " + std::string(name) + " ");
  std::optional<CounterValue> value;
  if (type == "gauge" && name == nameOfGauge(key)) value = readGauge(lines, key);
  if (type == "summary" && name == nameOfKey(key)) value = readSummary(lines, key);
  return value && values.emplace(key, *value).second;
}

}  // namespace

std::string PrometheusText::write(const CounterValues& values) {
  std::string text;
  for (const auto& [key, value] : values) {
    // A key with other characters could not be read back.
    if (isKey(key)) std::visit(Writer{text, key}, value);
  }
  return text;
}

Result<CounterValues> PrometheusText::read(std::string_view text) {
  CounterValues values;
  LineReader lines{text};
  while (!lines.rest.empty()) {
    if (!readCounter(lines, values)) {
      return Result<CounterValues>::failure(
          makeError(CounterErrorDomain, lines.number,
                    "line " + std::to_string(lines.number) + " was not written by the counters"));
    }
  }
  return Result<CounterValues>::success(std::move(values));
}

}  // namespace quenlet
