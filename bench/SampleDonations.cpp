#include "bench/SampleDonations.h"

#include <string>

namespace quenlet {
namespace {

constexpr double ninetyDaysSeconds = 7776000.0;

DonationOrigin originOf(std::size_t number) {
  const Date now = Date::now();
  return {"com.example.donor" + std::to_string(number % 50), "donation:" + std::to_string(number),
          "cluster:" + std::to_string(number / 10), now, now.addingSeconds(ninetyDaysSeconds)};
}

DonationValuePtr sampleDonation(std::size_t number) {
  const std::string digits = std::to_string(number);
  switch (number % 10) {
    case 0:
      return DonationValue::donationValueWithNameComponents(
          PersonNameComponents{{}, "Alex", {}, "Morgan", {}, {}}, originOf(number));
    case 1:
      return DonationValue::donationValueWithEmailAddress("Alex" + digits + "@Example.com", "home",
                                                          originOf(number));
    case 2:
    case 3:
    case 4:
      return DonationValue::donationValueWithEmailAddress(
          "alex" + std::to_string(number / 2) + "@example.com", "work", originOf(number));
    case 5:
    case 6: {
      PostalAddress address;
      address.street = digits + " Example Street";
      address.city = "Springfield";
      address.postalCode = "12345";
      return DonationValue::donationValueWithPostalAddress(
          std::move(address), PostalAddressStyle::mailingAddress, "home", originOf(number));
    }
    default:
      return DonationValue::donationValueWithPhoneNumber(
          *PhoneNumber::withStringValue("+49 30 " + std::to_string(1'000'000 + number)), "cell",
          originOf(number));
  }
}

}  // namespace

DonationValues sampleDonations(std::size_t count) {
  DonationValues donations;
  donations.reserve(count);
  for (std::size_t number = 0; number < count; ++number) {
    donations.push_back(sampleDonation(number));
  }
  return donations;
}

}  // namespace quenlet
