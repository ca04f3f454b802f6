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
    const std::string before = "\",\"arguments\":[";
    std::string noted = line.substr(line.find("\"event\":\"") + 9);
    noted.resize(noted.size() - 2);  // "\"}" or "]}"
    if (const std::size_t found = noted.find(before); found != noted.npos) {
      noted.replace(found, before.size(), " ");
    }
    const std::string identifier = "\"donationIdentifier\":";
    for (std::size_t at = 0; (at = noted.find("{\"kind\":", at)) != noted.npos;) {
      const std::size_t end = noted.find('}', at);
      const std::size_t begin = noted.find(identifier, at) + identifier.size();
      noted.replace(at, end + 1 - at, noted.substr(begin, end - begin));
    }
    std::erase(noted, '"');
    trace.note(noted);
  }

  std::vector<std::string> lines;

 private:
  Trace& trace;
};

}  // namespace quenlet
