#include "platform/logging/DetachedLineWriter.h"

#include <system_error>
#include <thread>
#include <utility>

namespace quenlet {

std::shared_ptr<DetachedLineWriter> DetachedLineWriter::make(Write write) {
  return std::shared_ptr<DetachedLineWriter>(new DetachedLineWriter(std::move(write)));
}

void DetachedLineWriter::write(std::string line) {
  {
    MutexLock lock(mutex);
    if (waiting.size() >= mostLinesWaiting) return;
    waiting.push_back(std::move(line));
    if (std::exchange(hasThread, true)) return;
  }
  startThread();
}

void DetachedLineWriter::startThread() {
  try {
    std::thread([self = shared_from_this()] { self->writeWaiting(); }).detach();
  } catch (const std::system_error&) {
    // No thread now: the lines wait until the next write() tries again.
    MutexLock lock(mutex);
    hasThread = false;
  }
}

void DetachedLineWriter::writeWaiting() {
  while (true) {
    std::string line;
    {
      MutexLock lock(mutex);
      if (waiting.empty()) {
        // Under the same lock as the test: the next write() starts a new thread.
        hasThread = false;
        return;
      }
      line = std::move(waiting.front());
      waiting.pop_front();
    }
    writeLine(line);
  }
}

}  // namespace quenlet
