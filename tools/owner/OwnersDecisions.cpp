#include "tools/owner/OwnersDecisions.h"

#include "platform/contacts/ContactStore.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/UserDirectories.h"

namespace quenlet {

Result<OwnersDecisions> OwnersDecisions::open() {
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Result<OwnersDecisions>::failure(home.error());
  return Result<OwnersDecisions>::success(OwnersDecisions(
      FeedbackFile(home.value() / FeedbackPath, std::make_shared<PosixDataProxy>())));
}

Result<std::vector<FeedbackDecision>> OwnersDecisions::all() const {
  return file.decisions(MeCardContactIdentifier);
}

Result<std::size_t> OwnersDecisions::takeBack(
    const std::vector<FeedbackDecision>& decisions) const {
  std::vector<std::string> keys;
  keys.reserve(decisions.size());
  for (const FeedbackDecision& decision : decisions) keys.push_back(decision.key);
  return file.remove(keys, MeCardContactIdentifier);
}

}  // namespace quenlet
