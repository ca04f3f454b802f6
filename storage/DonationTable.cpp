#include "storage/DonationTable.h"

#include <unordered_set>
#include <utility>

namespace quenlet {
namespace {

struct KeyOfRow final {
  const DonationValues& rows;
  const Fingerprint& operator()(std::size_t row) const { return rows[row]->donationKey(); }
};

std::size_t textBytesOf(const DonationValues& values) {
  std::size_t size = 0;
  for (std::size_t place = 0; place < values.size(); ++place) {
    prefetchDonation(values, place);
    size += values[place]->propertyListText().value_or("").size();
  }
  return size;
}

}  // namespace

DonationTable::DonationTable(const DonationTable& other)
    : rows(other.rows), isShared(true), mostTextBytes(other.mostTextBytes), index(other.index) {
  other.isShared = true;
}

DonationTable& DonationTable::operator=(DonationTable&& other) noexcept {
  rows = std::move(other.rows);
  isShared = other.isShared.load();
  mostTextBytes = other.mostTextBytes;
  index = std::move(other.index);
  return *this;
}

KeyIndex DonationTable::indexOf(const DonationValues& held, std::size_t capacity) {
  KeyIndex made(capacity);
  for (std::size_t row = 0; row < held.size(); ++row) {
    static_cast<void>(made.findOrAdd(held[row]->donationKey(), row, KeyOfRow{held}));
  }
  return made;
}

void DonationTable::prepareToChange(std::size_t mostRows) {
  if (!isShared) return;
  auto own = std::make_shared<DonationValues>();
  own->reserve(mostRows);
  own->assign(rows->begin(), rows->end());
  rows = std::move(own);
  isShared = false;
}

void DonationTable::insertAll(const DonationValues& values) {
  const std::size_t mostRows = rows->size() + values.size();
  prepareToChange(mostRows);
  if (!index.hasRoomFor(mostRows)) index = indexOf(*rows, mostRows);
  for (const DonationValuePtr& value : values) indexDonationByIdentifierReduction(value);
  mostTextBytes += textBytesOf(values);
}

void DonationTable::indexDonationByIdentifierReduction(const DonationValuePtr& value) {
  const std::size_t row = index.findOrAdd(value->donationKey(), rows->size(), KeyOfRow{*rows});
  if (row == rows->size()) {
    rows->push_back(value);
  } else {
    (*rows)[row] = value;
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
  // Before the rows change: it takes memory, which may be short.
  index = indexOf(*changed, changed->size());
  rows = std::move(changed);
  isShared = false;
}

DonationValuePtr DonationTable::find(const Fingerprint& donationKey) const {
  const std::size_t row = index.find(donationKey, KeyOfRow{*rows});
  return row == KeyIndex::none ? nullptr : (*rows)[row];
}

void DonationTable::removeIdentifiers(const std::vector<std::string>& donationIdentifiers) {
  DonationValues unwanted;
  for (const std::string& identifier : donationIdentifiers) {
    if (DonationValuePtr value = find(identifier)) unwanted.push_back(std::move(value));
  }
  removeAll(unwanted);
}

void DonationTable::removeAll(const DonationValues& values) {
  if (values.empty()) return;
  std::unordered_set<const DonationValue*> unwanted;
  for (const DonationValuePtr& value : values) unwanted.insert(value.get());
  removeIf([&unwanted](const DonationValue& row) { return unwanted.contains(&row); });
}

bool DonationTable::removeBundle(const std::string& bundleIdentifier) {
  const std::size_t before = rows->size();
  removeIf([key = DonationKeys::ofText(bundleIdentifier)](const DonationValue& row) {
    return row.bundleKey() == key;
  });
  return rows->size() < before;
}

}  // namespace quenlet
