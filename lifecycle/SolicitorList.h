#pragma once

#include <memory>
#include <utility>
#include <vector>

#include "core/DonationSolicitor.h"
#include "platform/foundation/Mutex.h"

namespace quenlet {

// The sources that are to be asked, in order, while discovery may still add to them. Thread-safe.
class SolicitorList final {
 public:
  using Solicitors = std::vector<std::shared_ptr<DonationSolicitor>>;

  void append(std::shared_ptr<DonationSolicitor> solicitor) EXCLUDES(mutex) {
    MutexLock lock(mutex);
    solicitors.push_back(std::move(solicitor));
  }
  [[nodiscard]] Solicitors snapshot() EXCLUDES(mutex) {
    MutexLock lock(mutex);
    return solicitors;
  }

 private:
  Mutex mutex;
  Solicitors solicitors GUARDED_BY(mutex);
};

}  // namespace quenlet
