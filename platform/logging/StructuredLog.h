#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>
#include <variant>

#include "model/DonationValue.h"
#include "quenlet/Error.h"

namespace quenlet {

// Receives finished log lines, without their line end. Thread-safe.
class LogSink {
 public:
  virtual ~LogSink() = default;
  virtual void write(const std::string& line) = 0;
};

// One argument of an event. A donated value is written as its kind, bundle and donation identifier,
// never with its content.
using LogArgument = std::variant<bool, std::int64_t, std::string_view, Date, ErrorPtr,
                                 DonationValuePtr, std::reference_wrapper<const DonationValues>>;

// Writes events as JSON objects, one per line, with the keys "time" (ISO 8601, UTC), "event" and
// "arguments" (a list, left out when empty). A line that would be too long, or list too many
// values, is shortened: long texts are cut, and values become counts by kind. Thread-safe.
class StructuredLog final {
 public:
  static constexpr std::size_t maximumLineSizeInBytes = 8192;  // with its line break
  static constexpr std::size_t mostListedValues = 64;

  StructuredLog(std::shared_ptr<LogSink> lineSink, std::function<Date()> clock)
      : sink(std::move(lineSink)), now(std::move(clock)) {}

  void record(std::string_view event, std::initializer_list<LogArgument> arguments = {}) const;

 private:
  std::shared_ptr<LogSink> sink;
  std::function<Date()> now;
};

}  // namespace quenlet
