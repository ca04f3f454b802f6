#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <utility>

#include "platform/ipc/EntitlementDatabase.h"
#include "platform/ipc/HeldBytes.h"
#include "platform/ipc/ServiceLimits.h"
#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/PatientThread.h"
#include "platform/scheduling/ProcessTransaction.h"
#include "platform/scheduling/WorkerPool.h"

namespace quenlet {

// Tells the connections of one service whether to take more requests, and keeps the process from an
// orderly exit while some are unanswered. Thread-safe.
class RequestAdmission final {
 public:
  // Begins a transaction of the process.
  using Begin = std::function<std::shared_ptr<ProcessTransaction>()>;

  // With a null `begin`, exit does not wait for answers.
  explicit RequestAdmission(Begin begin = nullptr) : beginTransaction(std::move(begin)) {}
  RequestAdmission(const RequestAdmission&) = delete;
  RequestAdmission& operator=(const RequestAdmission&) = delete;

  // From here on no more requests are taken.
  void suspend() { suspended = true; }
  [[nodiscard]] bool isSuspended() const { return suspended; }

  // A transaction for requests that are about to be taken; null when exit does not wait. Call it
  // before isSuspended(): then, once suspend() has returned and no transaction is open, no request
  // can be taken any more.
  [[nodiscard]] std::shared_ptr<ProcessTransaction> begin() const {
    return beginTransaction ? beginTransaction() : nullptr;
  }

 private:
  const Begin beginTransaction;
  std::atomic<bool> suspended = false;
};

// Shared by the connections of one service. Constant from the first connection on.
struct ServiceContext final {
  std::shared_ptr<EventLoop> loop;
  ServiceLimits limits;
  // Null: no program has entitlements.
  std::shared_ptr<const EntitlementDatabase> entitlements;
  std::shared_ptr<RequestAdmission> admission = std::make_shared<RequestAdmission>();
  // Null: memory is not counted.
  std::shared_ptr<HeldBytes> held;
  // For work that would hold up other connections. Null: it is done on the loop.
  std::shared_ptr<WorkerPool> workers;
  // Closes sockets with unread descriptors. Null when the kernel keeps peers of this socket from
  // attaching any.
  std::shared_ptr<PatientThread> patient;
};

}  // namespace quenlet
