#pragma once

#include <cstddef>
#include <memory>

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Mutex.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// A thread for calls that a peer can block for as long as it likes, such as closing descriptors
// that it attached to a message. Thread-safe. Runs blocks one by one, in order; they must not
// throw. The destructor does not wait: remaining blocks still run, so they own what they need.
class PatientThread final {
 public:
  enum class Start { now, whenNeeded };

  // Throws std::system_error when the thread is to be started now and cannot be.
  explicit PatientThread(Start start = Start::now);
  ~PatientThread();
  PatientThread(const PatientThread&) = delete;
  PatientThread& operator=(const PatientThread&) = delete;

  // Without a thread, and when none can be had, the block runs on the calling one.
  void perform(Block block);
  // Closes the descriptor and, with it, any descriptors attached to unread messages.
  void close(FileDescriptor descriptor);
  // The number of blocks that wait or are running.
  [[nodiscard]] std::size_t pendingBlocks() const;

 private:
  struct State;
  const std::shared_ptr<State> state;
};

}  // namespace quenlet
