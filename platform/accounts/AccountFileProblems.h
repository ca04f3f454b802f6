#pragma once

#include <map>
#include <memory>
#include <string>

#include "platform/foundation/Mutex.h"
#include "platform/foundation/ProblemReporter.h"
#include "quenlet/Error.h"

namespace quenlet {

// Remembers, for the whole process, which account files cannot be read. Each is reported once on
// standard error while that lasts, however many stores read it. Thread-safe.
class AccountFileProblems final {
 public:
  // The problems that one reading of the whole store found, by file name. Earlier problems that are
  // not among them are over.
  void setProblems(const std::map<std::string, ErrorPtr>& problems) EXCLUDES(mutex);

 private:
  Mutex mutex;
  std::map<std::string, std::shared_ptr<ProblemReporter>> reporters GUARDED_BY(mutex);
};

}  // namespace quenlet
