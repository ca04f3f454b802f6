#include "tools/owner/WholeCard.h"

#include <gmock/gmock.h>

namespace quenlet {
namespace {

// The agent's card may be older than the own card: a value that both have counts once.
TEST(WholeCardTest, LeavesOutDonatedValuesThatTheOwnCardHas) {
  const auto labeled = [](auto value) {
    return std::make_shared<const LabeledValue<decltype(value)>>(
        LabeledValue<decltype(value)>{"home", std::move(value), {}});
  };
  const auto cardWith = [&](const std::vector<std::string>& emails,
                            const std::vector<std::string>& numbers, const char* city) {
    ContactFields fields;
    for (const auto& email : emails) fields.emailAddresses.append(labeled(email));
    for (const auto& number : numbers) {
      fields.phoneNumbers.append(labeled(*PhoneNumber::withStringValue(number)));
    }
    PostalAddress address;
    address.city = city;
    fields.postalAddresses.append(labeled(address));
    return std::make_shared<const Contact>(std::move(fields));
  };
  const auto own = cardWith({"ren\u00e9@example.org"}, {"+49 30 1234567"}, "Bonn");
  const auto donated = cardWith({"rene\u0301@example.org", "Ann@example.org"},
                                {"+493012 34567", "+49 30 7654321"}, "Bonn");
  const Contact all = WholeCard::of(own, *donated).contact;
  ASSERT_EQ(all.emailAddresses().size(), 2U);
  EXPECT_EQ((*++all.emailAddresses().begin())->value, "Ann@example.org");
  ASSERT_EQ(all.phoneNumbers().size(), 2U);
  EXPECT_EQ((*++all.phoneNumbers().begin())->value.stringValue(), "+49 30 7654321");
  EXPECT_EQ(all.postalAddresses().size(), 1U);
  EXPECT_EQ(WholeCard::of(nullptr, *donated).contact.emailAddresses().size(), 2U);
}

}  // namespace
}  // namespace quenlet
