#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

#include "platform/scheduling/ProcessTransaction.h"

namespace quenlet {

// Whether a service still takes requests, and what keeps the process from its orderly end while
// some that were taken are not answered. Shared by a service's connections. Thread-safe.
class RequestAdmission final {
 public:
  // Begins a transaction of the process.
  using Begin = std::function<std::shared_ptr<ProcessTransaction>()>;

  // Without `begin`, the process's end does not wait.
  explicit RequestAdmission(Begin begin = nullptr) : beginTransaction(std::move(begin)) {}
  RequestAdmission(const RequestAdmission&) = delete;
  RequestAdmission& operator=(const RequestAdmission&) = delete;

  // From here on no request is taken.
  void suspend() { suspended = true; }
  [[nodiscard]] bool isSuspended() const { return suspended; }

  // The transaction for requests that are about to be taken, null when the end does not wait. Ask
  // isSuspended() after it: who suspends and then finds no transaction open can be sure that none
  // is taken any more.
  [[nodiscard]] std::shared_ptr<ProcessTransaction> begin() const {
    return beginTransaction ? beginTransaction() : nullptr;
  }

 private:
  const Begin beginTransaction;
  std::atomic<bool> suspended = false;
};

}  // namespace quenlet
