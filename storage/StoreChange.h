#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "model/DonationValue.h"
#include "quenlet/Error.h"
#include "storage/BundleLimit.h"

namespace quenlet {

// One change of the store: a variant of what a donor, the owner or a renewal can ask for.
struct InsertOrModifyValues final {
  DonationValues values;
};
struct RemoveValuesWithIdentifiers final {
  std::vector<std::string> identifiers;
};
struct RemoveValuesWithBundleIdentifier final {
  std::string bundleIdentifier;
};
using ChangeType = std::variant<InsertOrModifyValues, RemoveValuesWithIdentifiers,
                                RemoveValuesWithBundleIdentifier>;

// The outcome of the save of a change.
class SaveResponse final {
 public:
  [[nodiscard]] static SaveResponse success() { return SaveResponse(nullptr); }
  // `error` is not null.
  [[nodiscard]] static SaveResponse failure(ErrorPtr error) {
    return SaveResponse(std::move(error));
  }
  [[nodiscard]] bool isSuccess() const { return saveError == nullptr; }
  // Null for success.
  [[nodiscard]] const ErrorPtr& error() const { return saveError; }

 private:
  explicit SaveResponse(ErrorPtr error) : saveError(std::move(error)) {}
  ErrorPtr saveError;
};
using SaveReply = std::function<void(const SaveResponse&)>;
// For a change whose outcome nobody waits for.
inline void nobodyWaits(const SaveResponse&) {}

// Checked when the change's turn comes: if `limit` (null for none) forbids any part of the change,
// none of it is made, and `refused` is called on the reply scheduler.
struct ChangeLimit final {
  std::shared_ptr<const BundleLimit> limit = nullptr;
  std::function<void(const ErrorPtr&)> refused = nullptr;
};

// A change, who hears of it, and what it may touch.
struct SubmittedChange final {
  ChangeType change;
  SaveReply saveReply;
  ChangeLimit within = {};
};

}  // namespace quenlet
