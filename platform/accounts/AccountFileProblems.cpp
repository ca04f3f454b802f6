#include "platform/accounts/AccountFileProblems.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace quenlet {
namespace {

// A file's name as a line may begin with it: whoever may write files there may not write lines.
std::string subjectOf(std::string fileName) {
  std::replace_if(
      fileName.begin(), fileName.end(),
      [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; }, '?');
  return fileName;
}

}  // namespace

void AccountFileProblems::setProblems(const std::map<std::string, ErrorPtr>& problems) {
  std::vector<std::pair<std::shared_ptr<ProblemReporter>, ErrorPtr>> reports;
  {
    MutexLock lock(mutex);
    std::erase_if(reporters, [&](const auto& known) { return !problems.contains(known.first); });
    for (const auto& [fileName, error] : problems) {
      std::shared_ptr<ProblemReporter>& reporter = reporters[fileName];
      if (!reporter) reporter = std::make_shared<ProblemReporter>(subjectOf(fileName));
      reports.emplace_back(reporter, error);
    }
  }
  for (const auto& [reporter, error] : reports) reporter->setProblem(error);
}

}  // namespace quenlet
