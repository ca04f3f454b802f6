#include "platform/foundation/ProblemReporter.h"

#include <cstdio>

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
  std::fprintf(stderr, "quenlet: %s: %s\n", subject.c_str(),
               onOneLine(problem->debugDescription()).c_str());
}

}  // namespace quenlet
