#pragma once

#include <memory>
#include <utility>

#include "platform/foundation/Cancelable.h"

namespace quenlet {

// Marks work that the end of the process must not interrupt: an orderly end waits while the object
// exists. Thread-safe.
class ProcessTransaction final {
 public:
  // `hold` delays the end of the process until it is cancelled.
  explicit ProcessTransaction(std::shared_ptr<Cancelable> hold) : held(std::move(hold)) {}
  ~ProcessTransaction() { held->cancel(); }
  ProcessTransaction(const ProcessTransaction&) = delete;
  ProcessTransaction& operator=(const ProcessTransaction&) = delete;

 private:
  const std::shared_ptr<Cancelable> held;
};

}  // namespace quenlet
