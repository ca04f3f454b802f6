#pragma once

#include <atomic>
#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "model/DonationValue.h"
#include "platform/foundation/KeyIndex.h"

namespace quenlet {

// The donations that the agent holds, one for each identifier, in the order in which the
// identifiers first came. A snapshot costs nothing, may go to any thread, and never changes: the
// first change after it copies the list's pointers. An index finds rows by identifier.
//
// Not thread-safe: nothing may overlap with a change.
class DonationTable final {
 public:
  DonationTable() = default;
  DonationTable(const DonationTable& other);
  DonationTable& operator=(DonationTable&& other) noexcept;

  // Whether all values' texts fit into `capacityInBytes` once `values` are inserted. Looks at every
  // value only when the upper bound kept along the way does not settle it.
  [[nodiscard]] bool hasRoomFor(const DonationValues& values, std::size_t capacityInBytes);
  // Inserts the values in order, each in place of the one held under its donation identifier.
  void insertAll(const DonationValues& values);
  // Drops every value for which `unwanted` is true.
  void removeIf(const std::function<bool(const DonationValue&)>& unwanted);
  // Drops the values under these identifiers; unknown ones are ignored.
  void removeIdentifiers(const std::vector<std::string>& donationIdentifiers);
  // Drops these values themselves: one that has been replaced meanwhile stays.
  void removeAll(const DonationValues& values);
  // Drops the values of one bundle; false when there were none.
  bool removeBundle(const std::string& bundleIdentifier);

  // The value under an identifier, or null.
  [[nodiscard]] DonationValuePtr find(const Fingerprint& donationKey) const;
  [[nodiscard]] DonationValuePtr find(std::string_view donationIdentifier) const {
    return find(DonationKeys::ofText(donationIdentifier));
  }
  // All values, in the table's order; later changes do not touch the list.
  [[nodiscard]] std::shared_ptr<const DonationValues> snapshot() const {
    isShared = true;
    return rows;
  }

 private:
  // Has the list to itself, with room for so many rows.
  void prepareToChange(std::size_t mostRows);
  // Puts `value` in place of the row with its identifier. The index must have room for one more.
  void indexDonationByIdentifierReduction(const DonationValuePtr& value);
  [[nodiscard]] static KeyIndex indexOf(const DonationValues& held, std::size_t capacity);

  std::shared_ptr<DonationValues> rows = std::make_shared<DonationValues>();
  // Whether others may hold the list. Readers may set it together.
  mutable std::atomic<bool> isShared = false;
  // An upper bound of the size of all texts: values that were replaced or dropped may still count.
  std::size_t mostTextBytes = 0;
  KeyIndex index;
};

}  // namespace quenlet
