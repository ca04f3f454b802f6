#pragma once

#include <string>
#include <string_view>

#include "platform/foundation/Mutex.h"
#include "quenlet/Error.h"

namespace quenlet {

// Reports what is wrong with one thing on standard error: a line when a problem begins or changes,
// and none while it lasts. Control characters and line breaks in it become blanks. Thread-safe.
class ProblemReporter final {
 public:
  // `subject` begins each line: the name of a file, say.
  explicit ProblemReporter(std::string_view subject);

  // The current problem, null for none. Its sentence is written, so it must not hold personal
  // values.
  void setProblem(const ErrorPtr& problem) EXCLUDES(mutex);

 private:
  const std::string subject;
  Mutex mutex;
  ErrorPtr last GUARDED_BY(mutex);
};

}  // namespace quenlet
