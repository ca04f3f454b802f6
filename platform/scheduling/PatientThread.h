#pragma once

#include <cstddef>
#include <memory>

#include "platform/foundation/Mutex.h"
#include "platform/scheduling/FileDescriptor.h"
#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// A thread for what may have to wait as long as somebody else likes, such as the end of descriptors
// that a peer attached to a message. Thread-safe. Runs blocks one by one, in order; they do not
// throw. When this goes, nobody waits for what is under way: blocks that are left still run, and
// own what they need.
class PatientThread final {
 public:
  // Throws std::system_error when the thread cannot be started.
  PatientThread();
  ~PatientThread();
  PatientThread(const PatientThread&) = delete;
  PatientThread& operator=(const PatientThread&) = delete;

  void perform(Block block);
  // Closes it, and with it what its unread messages hold.
  void close(FileDescriptor descriptor);
  // How many blocks wait or are under way.
  [[nodiscard]] std::size_t pendingBlocks() const;

 private:
  struct State;
  const std::shared_ptr<State> state;
};

}  // namespace quenlet
