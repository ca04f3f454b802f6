#include "core/DonationTable.h"

#include <unordered_set>

#include "platform/foundation/Text.h"

namespace quenlet {

void DonationTable::insertAll(const DonationValues& values) {
  auto changed = std::make_shared<DonationValues>();
  changed->reserve(rows->size() + values.size());
  changed->assign(rows->begin(), rows->end());
  for (const DonationValuePtr& value : values) {
    const auto found = index.find(value->keys().donationIdentifier);
    if (found == index.end()) {
      index.emplace(value->keys().donationIdentifier, changed->size());
      changed->push_back(value);
    } else {
      // The index must not keep a view into the row that goes.
      const std::size_t place = found->second;
      index.erase(found);
      index.emplace(value->keys().donationIdentifier, place);
      (*changed)[place] = value;
    }
  }
  rows = std::move(changed);
}

void DonationTable::removeIf(const std::function<bool(const DonationValue&)>& unwanted) {
  auto changed = std::make_shared<DonationValues>();
  changed->reserve(rows->size());
  index.clear();
  for (const DonationValuePtr& row : *rows) {
    if (unwanted(*row)) continue;
    index.emplace(row->keys().donationIdentifier, changed->size());
    changed->push_back(row);
  }
  rows = std::move(changed);
}

DonationValuePtr DonationTable::find(const std::string& donationIdentifier) const {
  const auto found = index.find(canonicalKey(donationIdentifier));
  return found == index.end() ? nullptr : (*rows)[found->second];
}

void DonationTable::removeIdentifiers(const std::vector<std::string>& donationIdentifiers) {
  std::unordered_set<std::string> unwanted;
  for (const std::string& identifier : donationIdentifiers) {
    std::string key = canonicalKey(identifier);
    if (index.contains(key)) unwanted.insert(std::move(key));
  }
  if (unwanted.empty()) return;
  removeIf([&unwanted](const DonationValue& row) {
    return unwanted.contains(row.keys().donationIdentifier);
  });
}

bool DonationTable::removeBundle(const std::string& bundleIdentifier) {
  const std::size_t before = rows->size();
  removeIf([key = canonicalKey(bundleIdentifier)](const DonationValue& row) {
    return row.keys().bundleIdentifier == key;
  });
  return rows->size() < before;
}

}  // namespace quenlet
