#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "platform/feedback/FeedbackContent.h"
#include "platform/foundation/KeyedHash.h"
#include "platform/foundation/PropertyList.h"

namespace quenlet {

enum class FeedbackStatus : std::uint8_t { rejected, confirmed };

// What a contact's owner decided on one content.
struct FeedbackDecision final {
  FeedbackStatus status;
  Value value;      // without a label
  std::string key;  // as in FeedbackContent
};

// The content of the feedback file: for each contact identifier a list of contents with their
// status, "rejected" or "confirmed". Unknown elements are ignored. Pure functions.
class FeedbackEntries final {
 public:
  // The keys of all contents with a known status, by contact identifier.
  using KeySet = std::unordered_set<std::string, TextHash>;
  using KeySets = std::unordered_map<std::string, KeySet>;
  using KeySetsPtr = std::shared_ptr<const KeySets>;

  FeedbackEntries() = delete;

  [[nodiscard]] static KeySetsPtr keySetsOfFile(const PropertyListDictionary& contacts);
  // Whether `sets` has keys that `former` lacks; a null `former` has none.
  [[nodiscard]] static bool hasMore(const KeySets& sets, const KeySetsPtr& former);
  // Adds to a contact's list the contents that it does not hold as rejected; a confirmed entry
  // becomes a rejected one. Returns whether the list changed.
  static bool addRejected(const std::vector<FeedbackContent>& contents, PropertyListArray& list);
  // In the order of the list; of several on the same content, the first.
  [[nodiscard]] static std::vector<FeedbackDecision> decisionsOfList(const PropertyListArray& list);
  // Removes from a contact's list all decisions on contents with these keys. Returns on how many
  // contents there was one.
  static std::size_t remove(const std::vector<std::string>& keys, PropertyListArray& list);
};

}  // namespace quenlet
