#include "platform/foundation/ProblemReporter.h"

#include "platform/foundation/StandardStreams.h"
#include "platform/foundation/Text.h"

namespace quenlet {

ProblemReporter::ProblemReporter(std::string_view subjectOfLines)
    : subject(onOneLine(subjectOfLines)) {}

void ProblemReporter::setProblem(const ErrorPtr& problem) {
  {
    MutexLock lock(mutex);
    const bool isKnown = problem && last && *problem == *last;
    last = problem;
    if (!problem || isKnown) return;
  }
  // Without the lock: the write may wait for a reader.
  StandardStreams::writeError("quenlet: " + subject + ": " +
                              onOneLine(problem->debugDescription()));
}

}  // namespace quenlet
