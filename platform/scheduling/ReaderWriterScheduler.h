#pragma once

#include <memory>

#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// Runs writer blocks alone and reader blocks together. Blocks start in submission order: a block
// sees the effect of every writer submitted before it, and of none submitted after it. Thread-safe.
// Pending blocks still run after the last reference is dropped.
class ReaderWriterScheduler {
 public:
  virtual ~ReaderWriterScheduler() = default;
  // Asynchronous; cancelling the token before the block starts drops it.
  virtual std::shared_ptr<Cancelable> performWriterBlock(Block block) = 0;
  virtual std::shared_ptr<Cancelable> performReaderBlock(Block block) = 0;
  // Runs `block` as a reader and returns after it, on the calling thread. Do not call it from a
  // block of the same scheduler.
  virtual void performSynchronousReaderBlock(const Block& block) = 0;
};

}  // namespace quenlet
