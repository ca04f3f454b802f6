#include "platform/feedback/FeedbackEntries.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace quenlet {
namespace {

constexpr char statusKey[] = "status";
constexpr char rejectedStatus[] = "rejected";
constexpr char confirmedStatus[] = "confirmed";

std::optional<FeedbackStatus> statusOf(const PropertyListDictionary& entry) {
  const std::string* status = findString(entry, statusKey);
  if (!status) return std::nullopt;
  if (*status == rejectedStatus) return FeedbackStatus::rejected;
  if (*status == confirmedStatus) return FeedbackStatus::confirmed;
  return std::nullopt;
}

// One element of a contact's list; nothing unless it has a known status and content.
std::optional<FeedbackDecision> decisionOf(const PropertyList& element) {
  const PropertyListDictionary* entry = element.dictionary();
  const std::optional<FeedbackStatus> status = entry ? statusOf(*entry) : std::nullopt;
  if (!status) return std::nullopt;
  std::optional<Value> value = FeedbackContent::valueOfEntry(*entry);
  if (!value) return std::nullopt;
  std::string key = FeedbackContent::keyOfValue(*value);
  return FeedbackDecision{*status, *std::move(value), std::move(key)};
}

std::optional<std::string> keyOfElement(const PropertyList& element) {
  std::optional<FeedbackDecision> decision = decisionOf(element);
  if (!decision) return std::nullopt;
  return std::move(decision->key);
}

FeedbackEntries::KeySet keysOfList(const PropertyListArray& list) {
  FeedbackEntries::KeySet keys;
  for (const PropertyList& element : list) {
    if (std::optional<std::string> key = keyOfElement(element)) keys.insert(*std::move(key));
  }
  return keys;
}

PropertyList rejectedElement(const FeedbackContent& content) {
  PropertyListDictionary element = content.entry;
  element.emplace(statusKey, rejectedStatus);
  return element;
}

bool isRejected(const PropertyList& element) {
  return statusOf(*element.dictionary()) == FeedbackStatus::rejected;
}

}  // namespace

FeedbackEntries::KeySetsPtr FeedbackEntries::keySetsOfFile(const PropertyListDictionary& contacts) {
  const auto sets = std::make_shared<KeySets>();
  for (const auto& [contactIdentifier, list] : contacts) {
    if (list.array()) sets->emplace(contactIdentifier, keysOfList(*list.array()));
  }
  return sets;
}

bool FeedbackEntries::hasMore(const KeySets& sets, const KeySetsPtr& former) {
  return std::any_of(sets.begin(), sets.end(), [&](const auto& set) {
    const auto& [contactIdentifier, keys] = set;
    const auto found = former ? former->find(contactIdentifier) : KeySets::const_iterator();
    if (!former || found == former->end()) return !keys.empty();
    return std::any_of(keys.begin(), keys.end(),
                       [&](const std::string& key) { return !found->second.contains(key); });
  });
}

bool FeedbackEntries::addRejected(const std::vector<FeedbackContent>& contents,
                                  PropertyListArray& list) {
  std::unordered_map<std::string, std::size_t, TextHash> positions;
  for (std::size_t position = 0; position < list.size(); ++position) {
    if (auto key = keyOfElement(list[position])) positions.emplace(*std::move(key), position);
  }
  bool changed = false;
  for (const FeedbackContent& content : contents) {
    // Additions are registered as well: a batch may contain the same content twice.
    const auto [found, isNew] = positions.emplace(content.key, list.size());
    if (isNew) {
      list.push_back(rejectedElement(content));
    } else if (!isRejected(list[found->second])) {
      list[found->second] = rejectedElement(content);
    } else {
      continue;
    }
    changed = true;
  }
  return changed;
}

std::vector<FeedbackDecision> FeedbackEntries::decisionsOfList(const PropertyListArray& list) {
  std::vector<FeedbackDecision> decisions;
  KeySet seen;
  for (const PropertyList& element : list) {
    std::optional<FeedbackDecision> decision = decisionOf(element);
    if (decision && seen.insert(decision->key).second) decisions.push_back(*std::move(decision));
  }
  return decisions;
}

std::size_t FeedbackEntries::remove(const std::vector<std::string>& keys, PropertyListArray& list) {
  const KeySet unwanted(keys.begin(), keys.end());
  KeySet removed;
  std::erase_if(list, [&](const PropertyList& element) {
    std::optional<std::string> key = keyOfElement(element);
    if (!key || !unwanted.contains(*key)) return false;
    removed.insert(*std::move(key));
    return true;
  });
  return removed.size();
}

}  // namespace quenlet
