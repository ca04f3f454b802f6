#include "storage/DonationTable.h"

#include <bit>
#include <unordered_set>

#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

std::size_t textBytesOf(const DonationValues& values) {
  std::size_t size = 0;
  for (std::size_t place = 0; place < values.size(); ++place) {
    prefetchDonation(values, place);
    size += values[place]->propertyListText().value_or("").size();
  }
  return size;
}

}  // namespace

// The slot of the row with that identifier, or the free one where it belongs. Ends, since the index
// always has free slots.
std::size_t DonationTable::positionFor(const DonationValues& held, const ComparisonKey& key) const {
  std::size_t position = key.hash & (index.size() - 1);
  while (true) {
    const Slot& slot = index[position];
    if (slot.rowAndOne == 0) return position;
    if (slot.hash == key.hash && held[slot.rowAndOne - 1]->donationKey() == key) return position;
    position = (position + 1) & (index.size() - 1);
  }
}

void DonationTable::indexAll(const DonationValues& held, std::size_t capacity) {
  index.assign(std::bit_ceil(capacity + capacity / 2 + 2), {});
  index.shrink_to_fit();
  for (std::uint32_t row = 0; row < held.size(); ++row) {
    const ComparisonKey key = held[row]->donationKey();
    index[positionFor(held, key)] = {key.hash, row + 1};
  }
}

void DonationTable::insertAll(const DonationValues& values) {
  auto changed = std::make_shared<DonationValues>();
  const std::size_t mostRows = rows->size() + values.size();
  changed->reserve(mostRows);
  changed->assign(rows->begin(), rows->end());
  if (mostRows + mostRows / 2 >= index.size()) indexAll(*changed, mostRows);
  for (const DonationValuePtr& value : values) {
    indexDonationByIdentifierReduction(*changed, value);
  }
  mostTextBytes += textBytesOf(values);
  rows = std::move(changed);
}

void DonationTable::indexDonationByIdentifierReduction(DonationValues& held,
                                                       const DonationValuePtr& value) {
  const ComparisonKey key = value->donationKey();
  Slot& slot = index[positionFor(held, key)];
  if (slot.rowAndOne == 0) {
    held.push_back(value);
    slot = {key.hash, static_cast<std::uint32_t>(held.size())};
  } else {
    held[slot.rowAndOne - 1] = value;
  }
}

bool DonationTable::hasRoomFor(const DonationValues& values, std::size_t capacityInBytes) {
  const std::size_t added = textBytesOf(values);
  if (mostTextBytes + added <= capacityInBytes) return true;
  // The bound may be too high by values that have gone.
  mostTextBytes = textBytesOf(*rows);
  if (mostTextBytes + added <= capacityInBytes) return true;
  // Values that would be replaced make room for the new ones.
  DonationTable changed(*this);
  changed.insertAll(values);
  return textBytesOf(*changed.rows) <= capacityInBytes;
}

void DonationTable::removeIf(const std::function<bool(const DonationValue&)>& unwanted) {
  auto changed = std::make_shared<DonationValues>();
  changed->reserve(rows->size());
  for (const DonationValuePtr& row : *rows) {
    if (!unwanted(*row)) changed->push_back(row);
  }
  // A slot freed in place would cut the probes of others short.
  indexAll(*changed, changed->size());
  rows = std::move(changed);
}

DonationValuePtr DonationTable::find(const std::string& donationIdentifier) const {
  const std::string text = canonicalKey(donationIdentifier);
  const Slot& slot = index[positionFor(*rows, ComparisonKey::of(text))];
  return slot.rowAndOne == 0 ? nullptr : (*rows)[slot.rowAndOne - 1];
}

void DonationTable::removeIdentifiers(const std::vector<std::string>& donationIdentifiers) {
  std::unordered_set<const DonationValue*> unwanted;
  for (const std::string& identifier : donationIdentifiers) {
    if (const DonationValuePtr value = find(identifier)) unwanted.insert(value.get());
  }
  if (unwanted.empty()) return;
  removeIf([&unwanted](const DonationValue& row) { return unwanted.contains(&row); });
}

bool DonationTable::removeBundle(const std::string& bundleIdentifier) {
  const std::size_t before = rows->size();
  const std::string text = canonicalKey(bundleIdentifier);
  removeIf(
      [key = ComparisonKey::of(text)](const DonationValue& row) { return row.bundleKey() == key; });
  return rows->size() < before;
}

}  // namespace quenlet
