#pragma once

#include <memory>
#include <utility>

#include "platform/foundation/Cancelable.h"

namespace quenlet {

// A piece of work that the process is not to be ended in the middle of: while the object exists, an
// orderly end waits for it. Thread-safe.
class ProcessTransaction final {
 public:
  // `hold` keeps the process from its end until it is cancelled.
  explicit ProcessTransaction(std::shared_ptr<Cancelable> hold) : held(std::move(hold)) {}
  ~ProcessTransaction() { held->cancel(); }
  ProcessTransaction(const ProcessTransaction&) = delete;
  ProcessTransaction& operator=(const ProcessTransaction&) = delete;

 private:
  const std::shared_ptr<Cancelable> held;
};

}  // namespace quenlet
