#include "platform/foundation/StandardStreams.h"

#include <unistd.h>

#include <atomic>
#include <memory>
#include <string>

#include "platform/foundation/DetachedStreams.h"

namespace quenlet {
namespace {

// Null while lines are written at once. Global, because the two streams belong to the process.
std::atomic<DetachedStreams*> detached = nullptr;

void writeLine(int descriptor, std::string_view line) {
  if (DetachedStreams* const streams = detached) {
    streams->writeLine(descriptor, line);
  } else {
    // One write for text and line break: other threads cannot come in between.
    DetachedStreams::writeWhole(descriptor, std::string(line) + '\n');
  }
}

}  // namespace

void StandardStreams::writeOutput(std::string_view line) { writeLine(STDOUT_FILENO, line); }

void StandardStreams::writeError(std::string_view line) { writeLine(STDERR_FILENO, line); }

void StandardStreams::detach() {
  // Its thread keeps the object alive until the process ends.
  if (!detached) detached = DetachedStreams::make().get();
}

void StandardStreams::drain(std::chrono::milliseconds patience) {
  if (DetachedStreams* const streams = detached) streams->drain(patience);
}

}  // namespace quenlet
