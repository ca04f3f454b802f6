#pragma once

#include "platform/logging/StructuredLog.h"
#include "tests/support/Trace.h"

namespace quenlet {

// Keeps the log's lines, and notes each event with its arguments in a trace:
// "willRenewValues:withDonor: [a,b],app". A donated value is noted by its donation identifier.
class RecordingLog final : public LogSink {
 public:
  explicit RecordingLog(Trace& shared) : trace(shared) {}

  void write(const std::string& line) override {
    lines.push_back(line);
    std::string noted = between(line, "\"event\":\"", "\"");
    const std::string before = "\"arguments\":[";
    if (const std::size_t found = line.find(before); found != std::string::npos) {
      std::string arguments = line.substr(found + before.size());
      arguments.resize(arguments.size() - 2);  // "]}"
      noted += " " + withIdentifiersForValues(std::move(arguments));
    }
    trace.note(noted);
  }

  std::vector<std::string> lines;

 private:
  static std::string withIdentifiersForValues(std::string arguments) {
    std::erase(arguments, '"');
    for (auto start = arguments.find("{kind:"); start != std::string::npos;
         start = arguments.find("{kind:", start)) {
      const std::size_t size = arguments.find('}', start) + 1 - start;
      arguments.replace(start, size,
                        between(arguments.substr(start, size), "donationIdentifier:", "}"));
    }
    return arguments;
  }
  static std::string between(const std::string& line, const std::string& before,
                             const std::string& after) {
    const std::size_t found = line.find(before);
    if (found == std::string::npos) return {};
    const std::size_t start = found + before.size();
    return line.substr(start, line.find(after, start) - start);
  }

  Trace& trace;
};

}  // namespace quenlet
