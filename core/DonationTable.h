#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "model/DonationValue.h"

namespace quenlet {

// The donations that the agent holds, at most one an identifier, in the order in which their
// identifiers first came. The rows are an immutable list that each change replaces, so that a
// snapshot costs nothing and may go to any thread; a change costs a copy of the list's pointers.
// Changes need a thread of their own.
class DonationTable final {
 public:
  DonationTable() = default;
  DonationTable(const DonationTable&) = default;
  DonationTable(DonationTable&&) = default;
  DonationTable& operator=(DonationTable&&) = default;

  // Whether the texts of all values have no more than `capacityInBytes` together once `values` are
  // put in. Looks at every value only when it is not clear from what was put in before.
  [[nodiscard]] bool hasRoomFor(const DonationValues& values, std::size_t capacityInBytes);
  // Puts each value under its donation identifier, in order; a value takes the place of the one
  // that is held there.
  void insertAll(const DonationValues& values);
  // Drops every value for which `unwanted` is true.
  void removeIf(const std::function<bool(const DonationValue&)>& unwanted);
  // Drops the values under these identifiers; unknown ones are ignored.
  void removeIdentifiers(const std::vector<std::string>& donationIdentifiers);
  // Drops the values whose origin has this bundle identifier; whether there were any.
  bool removeBundle(const std::string& bundleIdentifier);

  // The value under an identifier, or null.
  [[nodiscard]] DonationValuePtr find(const std::string& donationIdentifier) const;
  // All values, in the table's order; later changes do not touch the list.
  [[nodiscard]] const std::shared_ptr<const DonationValues>& snapshot() const { return rows; }

 private:
  // A place in the index: of the row with this hash of its identifier, or free.
  struct Slot final {
    std::uint32_t hash = 0;
    std::uint32_t rowAndOne = 0;  // 0 while free
  };

  // Stores `value` in the list built so far under its identifier, in the place of what was there.
  // The index has room for one more.
  void indexDonationByIdentifierReduction(DonationValues& held, const DonationValuePtr& value);
  [[nodiscard]] std::size_t positionFor(const DonationValues& held, const ComparisonKey& key) const;
  void indexAll(const DonationValues& held, std::size_t capacity);

  std::shared_ptr<const DonationValues> rows = std::make_shared<const DonationValues>();
  // Of the values' texts together, at most; values that were replaced or dropped may count.
  std::size_t mostTextBytes = 0;
  // Open-addressed by the hash; its size is a power of two and at most two thirds of it are taken.
  std::vector<Slot> index = std::vector<Slot>(4);
};

}  // namespace quenlet
