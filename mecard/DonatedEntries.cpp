#include "mecard/DonatedEntries.h"

namespace quenlet {
namespace {

template <typename T>
std::shared_ptr<const LabeledValue<T>> makeEntry(T value, std::string label,
                                                 DonationOrigin origin) {
  return std::make_shared<const LabeledValue<T>>(
      LabeledValue<T>{std::move(label),
                      std::move(value),
                      {std::make_shared<const DonationOrigin>(std::move(origin))}});
}

}  // namespace

template <>
std::shared_ptr<const LabeledValue<std::string>> entryOf(const DonationValue& donation) {
  DecodedDonation decoded = donation.decoded();
  auto& email = std::get<Value::EmailAddress>(decoded.content);
  return makeEntry(std::move(email.address), std::move(email.label), std::move(decoded.origin));
}

template <>
std::shared_ptr<const LabeledValue<PhoneNumber>> entryOf(const DonationValue& donation) {
  DecodedDonation decoded = donation.decoded();
  auto& phone = std::get<Value::PhoneNumber>(decoded.content);
  return makeEntry(*PhoneNumber::withStringValue(phone.number), std::move(phone.label),
                   std::move(decoded.origin));
}

template <>
std::shared_ptr<const LabeledValue<PostalAddress>> entryOf(const DonationValue& donation) {
  DecodedDonation decoded = donation.decoded();
  auto& postal = std::get<Value::PostalAddress>(decoded.content);
  return makeEntry(std::move(postal.address), std::move(postal.label), std::move(decoded.origin));
}

}  // namespace quenlet
