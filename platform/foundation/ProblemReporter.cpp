#include "platform/foundation/ProblemReporter.h"

#include <cstdio>
#include <utility>

namespace quenlet {

ProblemReporter::ProblemReporter(std::string subjectOfLines) : subject(std::move(subjectOfLines)) {}

void ProblemReporter::setProblem(const ErrorPtr& problem) {
  {
    MutexLock lock(mutex);
    const bool isKnown = problem && last && *problem == *last;
    last = problem;
    if (!problem || isKnown) return;
  }
  std::fprintf(stderr, "quenlet: %s: %s\n", subject.c_str(), problem->debugDescription().c_str());
}

}  // namespace quenlet
