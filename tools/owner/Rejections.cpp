#include "tools/owner/Rejections.h"

#include "platform/contacts/ContactStore.h"
#include "platform/files/PosixDataProxy.h"
#include "platform/files/UserDirectories.h"

namespace quenlet {

Result<Rejections> Rejections::open() {
  const auto home = UserDirectories::homeDirectory();
  if (!home.ok()) return Result<Rejections>::failure(home.error());
  return Result<Rejections>::success(
      Rejections(FeedbackFile(home.value() / FeedbackPath, std::make_shared<PosixDataProxy>())));
}

Result<std::vector<FeedbackDecision>> Rejections::all() const {
  return file.decisions(MeCardContactIdentifier);
}

Result<std::size_t> Rejections::takeBack(const std::vector<FeedbackDecision>& decisions) const {
  std::vector<std::string> keys;
  keys.reserve(decisions.size());
  for (const FeedbackDecision& decision : decisions) keys.push_back(decision.key);
  return file.remove(keys, MeCardContactIdentifier);
}

}  // namespace quenlet
