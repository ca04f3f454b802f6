#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/donations/FeedbackContent.h"
#include "platform/foundation/KeyedHash.h"
#include "platform/foundation/PropertyList.h"

namespace quenlet {

// What stands in the feedback file: for each contact identifier a list of contents with their
// status, "rejected" or "confirmed". What is not understood counts for nothing. Pure functions.
class FeedbackEntries final {
 public:
  // The keys of all contents with a known status, by contact identifier.
  using KeySet = std::unordered_set<std::string, TextHash>;
  using KeySets = std::unordered_map<std::string, KeySet>;
  using KeySetsPtr = std::shared_ptr<const KeySets>;

  FeedbackEntries() = delete;

  [[nodiscard]] static KeySetsPtr keySetsOfFile(const PropertyListDictionary& contacts);
  // Whether there are keys in `sets` that are not in `former`, null for no keys.
  [[nodiscard]] static bool hasMore(const KeySets& sets, const KeySetsPtr& former);
  // Adds those contents to a contact's list that it does not hold as rejected; one that was
  // confirmed before stays one entry, and becomes a rejected one. Whether the list changed.
  static bool addRejected(const std::vector<FeedbackContent>& contents, PropertyListArray& list);
};

}  // namespace quenlet
