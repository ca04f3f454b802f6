#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "model/DonationValue.h"
#include "platform/contacts/LabeledValues.h"
#include "platform/contacts/PhoneNumber.h"

namespace quenlet {

// A donation as an entry of a contact's list, with its origin as store info. Requires the kind of
// the list's entries.
template <typename T>
[[nodiscard]] std::shared_ptr<const LabeledValue<T>> entryOf(const DonationValue& donation);

template <>
[[nodiscard]] std::shared_ptr<const LabeledValue<std::string>> entryOf(
    const DonationValue& donation);
template <>
[[nodiscard]] std::shared_ptr<const LabeledValue<PhoneNumber>> entryOf(
    const DonationValue& donation);
template <>
[[nodiscard]] std::shared_ptr<const LabeledValue<PostalAddress>> entryOf(
    const DonationValue& donation);

// Entries of one kind, each parsed from its donation when it is read.
template <typename T>
class DonatedEntries final : public EntriesOnDemand<T> {
 public:
  DonatedEntries(std::shared_ptr<const DonationValues> owner,
                 std::vector<const DonationValue*> donatedEntries)
      : donations(std::move(owner)), entries(std::move(donatedEntries)) {}

  std::size_t size() const override { return entries.size(); }
  std::shared_ptr<const LabeledValue<T>> entryAt(std::size_t place) const override {
    return entryOf<T>(*entries[place]);
  }

 private:
  const std::shared_ptr<const DonationValues> donations;
  const std::vector<const DonationValue*> entries;
};

// The list of these entries, which `owner` owns.
template <typename T>
[[nodiscard]] LabeledValues<T> entriesOf(const std::shared_ptr<const DonationValues>& owner,
                                         std::vector<const DonationValue*> entries) {
  if (entries.empty()) return {};
  entries.shrink_to_fit();
  return LabeledValues<T>(std::make_shared<const DonatedEntries<T>>(owner, std::move(entries)));
}

}  // namespace quenlet
