#pragma once

#include "tests/support/RecordingAgent.h"

namespace quenlet {

// Keeps donations as the agent does. The `failing`th call from now, from 1 on, gets `failure`. What
// does not change or list donations goes to the base.
class KeepingAgent final : public RecordingAgent {
 public:
  DonationValues held;
  // How many values came in each request, "3 1 ".
  std::string requests;
  std::set<std::string> rejectedIdentifiers;
  bool rejectsAll = false;
  int failing = 0;
  ErrorPtr failure;

  // "identifier@date " of what is held.
  [[nodiscard]] std::string heldText() const {
    std::string text;
    for (const DonationValuePtr& value : held) {
      const DonationOrigin origin = value->decoded().origin;
      const auto date = static_cast<int>(origin.donationDate.secondsSince1970());
      text += origin.donationIdentifier + "@" + std::to_string(date) + " ";
    }
    return text;
  }

  void donateMeCardValues(DonationValues values, ErrorReply reply) override {
    requests += std::to_string(values.size()) + " ";
    if (fails()) return reply(failure);
    for (const DonationValuePtr& value : values) {
      if (rejectsAll || rejectedIdentifiers.contains(value->decoded().origin.donationIdentifier)) {
        continue;
      }
      const auto place = std::find_if(held.begin(), held.end(), [&](const auto& present) {
        return present->donationKey() == value->donationKey();
      });
      *(place == held.end() ? held.emplace(place) : place) = value;
    }
    reply(nullptr);
  }
  void removeDonatedMeCardValuesForIdentifiers(std::vector<std::string> identifiers,
                                               SuccessReply reply) override {
    if (fails()) return reply(false, failure);
    for (const std::string& identifier : identifiers) {
      std::erase_if(held, [key = DonationKeys::ofText(identifier)](const auto& value) {
        return value->donationKey() == key;
      });
    }
    reply(true, nullptr);
  }
  // Donates the new account's identifier at 99.
  void changeFromAccount(AccountPtr from, AccountPtr to, ErrorReply reply) override {
    requests += (from ? "change " : "add ") + to->identifier + " ";
    DonationOrigin origin{"accounts", to->identifier, {}, Date(99), Date(1000)};
    donateMeCardValues({email(to->username.value_or(""), std::move(origin))}, std::move(reply));
  }
  void meCardDonations(DonationsReply reply) override {
    if (fails()) return reply(nullptr, failure);
    reply(listOf(held), nullptr);
  }
  void rejectValueWithDonationIdentifier(std::string identifier, ErrorReply reply) override {
    removeDonatedMeCardValuesForIdentifiers(
        {std::move(identifier)},
        [reply = std::move(reply)](bool, const ErrorPtr& error) { reply(error); });
  }

 private:
  bool fails() { return failing > 0 && --failing == 0; }
};

}  // namespace quenlet
