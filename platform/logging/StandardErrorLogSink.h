#pragma once

#include <string>

#include "platform/foundation/StandardStreams.h"
#include "platform/logging/StructuredLog.h"

namespace quenlet {

// Writes lines to standard error. Thread-safe.
class StandardErrorLogSink final : public LogSink {
 public:
  void write(const std::string& line) override { StandardStreams::writeError(line); }
};

}  // namespace quenlet
