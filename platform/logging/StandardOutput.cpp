#include "platform/logging/StandardOutput.h"

#include "platform/foundation/StandardStreams.h"

namespace quenlet {

void printLine(std::string_view line) { StandardStreams::writeOutput(line); }

}  // namespace quenlet
