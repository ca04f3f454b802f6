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

// What the connections of one service share. Constant once there are any.
struct ServiceContext final {
  std::shared_ptr<EventLoop> loop;
  ServiceLimits limits;
  // Null when nobody is entitled to anything.
  std::shared_ptr<const EntitlementDatabase> entitlements;
  std::shared_ptr<RequestAdmission> admission = std::make_shared<RequestAdmission>();
  // Null when nobody counts.
  std::shared_ptr<HeldBytes> held;
  // For what would hold other connections up. Null when it is all done on the loop.
  std::shared_ptr<WorkerPool> workers;
  // Null when peers cannot attach descriptors.
  std::shared_ptr<PatientThread> patient;
};

}  // namespace quenlet
