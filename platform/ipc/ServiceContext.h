#pragma once

#include <memory>

#include "platform/ipc/EntitlementDatabase.h"
#include "platform/ipc/HeldBytes.h"
#include "platform/ipc/RequestAdmission.h"
#include "platform/ipc/ServiceLimits.h"
#include "platform/scheduling/EventLoop.h"
#include "platform/scheduling/PatientThread.h"
#include "platform/scheduling/WorkerPool.h"

namespace quenlet {

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
  // Closes sockets with unread descriptors. Null when the kernel keeps peers from attaching any.
  std::shared_ptr<PatientThread> patient;
};

}  // namespace quenlet
