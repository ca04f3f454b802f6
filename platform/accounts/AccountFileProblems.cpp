#include "platform/accounts/AccountFileProblems.h"

#include <utility>
#include <vector>

namespace quenlet {

void AccountFileProblems::setProblems(const std::map<std::string, ErrorPtr>& problems) {
  std::vector<std::pair<std::shared_ptr<ProblemReporter>, ErrorPtr>> reports;
  {
    MutexLock lock(mutex);
    std::erase_if(reporters, [&](const auto& known) { return !problems.contains(known.first); });
    for (const auto& [fileName, error] : problems) {
      std::shared_ptr<ProblemReporter>& reporter = reporters[fileName];
      if (!reporter) reporter = std::make_shared<ProblemReporter>(fileName);
      reports.emplace_back(reporter, error);
    }
  }
  for (const auto& [reporter, error] : reports) reporter->setProblem(error);
}

}  // namespace quenlet
