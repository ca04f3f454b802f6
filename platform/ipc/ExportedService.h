#pragma once

#include <memory>

#include "platform/ipc/FrameReader.h"
#include "platform/ipc/ServiceLimits.h"
#include "platform/ipc/ServiceListener.h"

namespace quenlet {

// What a connection exports to its peer: an object, and the interface that requests must match to
// reach it. A value type: a copy performs a request while the connection's own may change.
struct ExportedService final {
  // Has the object perform the request in a message. If it may not, returns the error with which to
  // answer; `reply` is not used then.
  [[nodiscard]] ErrorPtr perform(const FrameReader::Frame& message, const ServiceLimits& limits,
                                 WireReply reply) const;
  [[nodiscard]] bool expectsLongReply(const FrameReader::Frame& message) const;

  // Null until set.
  std::shared_ptr<const ServiceInterface> interface;
  std::shared_ptr<ExportedObject> object;
  // Whether the peer is; then the object needs no arguments.
  bool isRefused = false;
};

}  // namespace quenlet
