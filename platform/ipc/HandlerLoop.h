#pragma once

#include <memory>
#include <thread>

#include "platform/ipc/ClientLoop.h"

namespace quenlet {

// The loop on which a client's handlers run: on its own thread, or on the thread that dispatches.
class HandlerLoop final {
 public:
  enum class Thread { own, callers };

  // Throws std::system_error when the system has no thread or descriptor left.
  explicit HandlerLoop(Thread thread);
  // As finish().
  ~HandlerLoop();
  HandlerLoop(const HandlerLoop&) = delete;
  HandlerLoop& operator=(const HandlerLoop&) = delete;

  // Runs what is due, for the last time.
  void finish();
  [[nodiscard]] const std::shared_ptr<ClientLoop>& loop() const { return shared; }

 private:
  const std::shared_ptr<ClientLoop> shared = std::make_shared<ClientLoop>();
  std::thread ownThread;
  bool hasFinished = false;
};

}  // namespace quenlet
