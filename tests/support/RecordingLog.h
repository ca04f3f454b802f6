#pragma once

#include "platform/logging/StructuredLog.h"
#include "tests/support/Trace.h"

namespace quenlet {

// Keeps the log's lines, and notes each event with its arguments in a trace:
// "agentWillHandleRequest: meCardDonations:". A donated value is noted by its donation identifier;
// arguments that begin with a list of values are not noted.
class RecordingLog final : public LogSink {
 public:
  explicit RecordingLog(Trace& shared) : trace(shared) {}

  void write(const std::string& line) override {
    lines.push_back(line);
    std::string noted = between(line, "\"event\":\"", "\"");
    std::string arguments = between(line, "\"arguments\":[", "]}");
    std::erase(arguments, '"');
    if (arguments.starts_with('{')) {
      arguments = between(arguments, "donationIdentifier:", "}") +
                  arguments.substr(arguments.find('}') + 1);
    }
    if (!arguments.empty() && !arguments.starts_with('[')) noted += " " + arguments;
    trace.note(noted);
  }

  std::vector<std::string> lines;

 private:
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
