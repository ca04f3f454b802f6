#pragma once

#include <optional>
#include <vector>

#include "model/DonationValue.h"
#include "platform/accounts/Account.h"
#include "platform/contacts/Contact.h"
#include "quenlet/AccountRecord.h"
#include "quenlet/Card.h"
#include "quenlet/Donation.h"
#include "quenlet/Result.h"

namespace quenlet {

// Converts between the values of the public interface and the agent's own, without loss and in time
// linear in their size. What comes in by value is moved from. Errors name a donation by its
// identifier and quote no value. Stateless.
class Conversion final {
 public:
  Conversion() = delete;

  // invalidArguments (ServiceErrorDomain) when a phone number is not one.
  [[nodiscard]] static Result<DonationValuePtr> donationValue(Donation donation);
  // The same for all of them; the first error found.
  [[nodiscard]] static Result<DonationValues> donationValues(std::vector<Donation> donations);
  [[nodiscard]] static Donation donation(const DonationValue& value);
  [[nodiscard]] static std::vector<Donation> donations(const DonationValues& values);

  [[nodiscard]] static Name name(const PersonNameComponents& components);
  [[nodiscard]] static Address address(const PostalAddress& address);
  [[nodiscard]] static Card card(const Contact& contact);

  // Null for no account. invalidArguments for an empty identifier or properties that are not a
  // dictionary; PropertyListErrorDomain for a property list that cannot be read.
  [[nodiscard]] static Result<AccountPtr> account(std::optional<AccountRecord> record);
};

}  // namespace quenlet
