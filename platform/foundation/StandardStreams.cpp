#include "platform/foundation/StandardStreams.h"

#include <unistd.h>

#include <atomic>
#include <memory>
#include <string>

#include "platform/foundation/DetachedStreams.h"

namespace quenlet {
namespace {

// Null while lines are written at once. The streams are the process's, and so is this.
std::atomic<DetachedStreams*> detached = nullptr;

void writeLine(int descriptor, std::string_view line) {
  if (DetachedStreams* const streams = detached) {
    streams->writeLine(descriptor, line);
  } else {
    // In one call, so that the line stays in one piece.
    DetachedStreams::writeWhole(descriptor, std::string(line) + '\n');
  }
}

}  // namespace

void StandardStreams::writeOutput(std::string_view line) { writeLine(STDOUT_FILENO, line); }

void StandardStreams::writeError(std::string_view line) { writeLine(STDERR_FILENO, line); }

void StandardStreams::detach() {
  // Its thread keeps it to the end of the process.
  if (!detached) detached = DetachedStreams::make().get();
}

void StandardStreams::drain(std::chrono::milliseconds patience) {
  if (DetachedStreams* const streams = detached) streams->drain(patience);
}

}  // namespace quenlet
