#include "platform/feedback/FeedbackFile.h"

#include <utility>

namespace quenlet {

FeedbackFile::FeedbackFile(std::filesystem::path path, std::shared_ptr<DataProxy> dataProxy)
    : file(std::move(path), std::move(dataProxy)) {}

Result<std::vector<FeedbackDecision>> FeedbackFile::decisions(
    const std::string& contactIdentifier) const {
  using Decisions = Result<std::vector<FeedbackDecision>>;
  const Result<PropertyListDictionary> contacts = file.read();
  if (!contacts.ok()) return Decisions::failure(contacts.error());
  const PropertyList* list = findEntry(contacts.value(), contactIdentifier);
  if (!list || !list->array()) return Decisions::success({});
  return Decisions::success(FeedbackEntries::decisionsOfList(*list->array()));
}

Result<std::size_t> FeedbackFile::remove(const std::vector<std::string>& keys,
                                         const std::string& contactIdentifier) const {
  std::size_t removed = 0;
  const Future<bool> written = file.update(
      [&](PropertyListDictionary& contacts) {
        const auto found = contacts.find(contactIdentifier);
        if (found == contacts.end() || !found->second.array()) return false;
        PropertyListArray list = *found->second.array();
        removed = FeedbackEntries::remove(keys, list);
        found->second = std::move(list);
        return removed > 0;
      },
      PropertyListFile::OnDamage::fail);
  const Result<bool>& outcome = written.result();
  return outcome.ok() ? Result<std::size_t>::success(removed)
                      : Result<std::size_t>::failure(outcome.error());
}

}  // namespace quenlet
