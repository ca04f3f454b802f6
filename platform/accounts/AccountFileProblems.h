#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/foundation/Error.h"
#include "platform/foundation/Mutex.h"
#include "platform/foundation/ProblemReporter.h"

namespace quenlet {

// Remembers for a whole process which account files cannot be read, so that each is said once on
// standard error while that lasts, however many stores are made and read meanwhile. Thread-safe.
class AccountFileProblems final {
 public:
  // What one reading of the whole store found, by file name. What was wrong before and is not in
  // `problems` is over.
  void setProblems(const std::map<std::string, ErrorPtr>& problems) EXCLUDES(mutex);

 private:
  Mutex mutex;
  std::map<std::string, std::shared_ptr<ProblemReporter>> reporters GUARDED_BY(mutex);
};

}  // namespace quenlet
