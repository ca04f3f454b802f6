#include "tools/owner/CardInput.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <utility>

#include "client/CardDonor.h"
#include "client/CardFile.h"
#include "client/Conversion.h"
#include "model/DonationKeys.h"
#include "platform/contacts/ContactStore.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

constexpr char standardInput[] = "-";

// A pipe, such as that of a shell's "<(…)", has another path each time.
std::string placeOf(const std::string& path) {
  std::error_code failure;
  if (!std::filesystem::is_regular_file(path, failure)) return standardInput;
  const std::filesystem::path canonical = std::filesystem::canonical(path, failure);
  return failure ? path : canonical.native();
}

bool hasName(const Contact& contact) {
  return !contact.givenName().empty() || !contact.familyName().empty();
}

bool hasValue(const Contact& contact) {
  return !contact.emailAddresses().empty() || !contact.phoneNumbers().empty() ||
         !contact.postalAddresses().empty() || contact.imageData();
}

// How people would call the card: by its name, else by anything else on it.
std::string callNameOf(const VCard& card) {
  const Contact& contact = card.contact;
  if (!card.formattedName.empty()) return card.formattedName;
  if (hasName(contact)) {
    const std::string text = contact.givenName() + " " + contact.familyName();
    return std::string(trimmed(text));
  }
  if (!contact.nickname().empty()) return contact.nickname();
  if (!contact.emailAddresses().empty()) return (*contact.emailAddresses().begin())->value;
  if (!contact.phoneNumbers().empty())
    return (*contact.phoneNumbers().begin())->value.stringValue();
  return "card " + std::to_string(card.place) + ", without a name";
}

bool contains(std::string_view text, std::string_view searched) {
  return canonicalKey(lowercased(text)).find(searched) != std::string::npos;
}

bool holds(const VCard& card, const std::string& searched) {
  const Contact& contact = card.contact;
  const auto& addresses = contact.emailAddresses();
  return contains(card.formattedName, searched) || contains(card.uid, searched) ||
         contains(contact.givenName() + " " + contact.familyName(), searched) ||
         contains(contact.nickname(), searched) ||
         std::any_of(addresses.begin(), addresses.end(),
                     [&](const auto& entry) { return contains(entry->value, searched); });
}

}  // namespace

bool isNotAPerson(const Error& error) {
  return error.domain() == ContactErrorDomain &&
         error.code() == static_cast<int>(ContactErrorCode::notAPerson);
}

bool CardInput::isWhole() const {
  return std::all_of(failures.begin(), failures.end(),
                     [](const ErrorPtr& error) { return isNotAPerson(*error); });
}

Result<CardInput> CardInput::read(const std::string& path) {
  Result<VCards> read = CardFile::read(path);
  if (!read.ok()) return Result<CardInput>::failure(read.error());
  VCards found = std::move(read).takeValue();
  const bool hasCard = !found.cards.empty() ||
                       std::any_of(found.failures.begin(), found.failures.end(),
                                   [](const ErrorPtr& error) { return isNotAPerson(*error); });
  if (!hasCard) return Result<CardInput>::failure(found.failures.front());
  return Result<CardInput>::success(
      {path, placeOf(path), std::move(found.cards), std::move(found.failures)});
}

Result<DonatedFile> CardInput::donations(DonationTerms terms, const Pseudonyms& pseudonyms) const {
  DonatedFile file{.pseudonym = pseudonyms.of(place), .isWhole = isWhole()};
  if (terms.bundleIdentifier.empty()) {
    terms.bundleIdentifier = DonatedFile::bundleOf(file.pseudonym);
  }
  file.bundleIdentifier = terms.bundleIdentifier;
  CardDonor donor(std::move(terms), pseudonyms);
  donor.addFile(cards, place);
  Result<DonationValues> values = Conversion::donationValues(std::move(donor).takeDonations());
  if (!values.ok()) return Result<DonatedFile>::failure(values.error());
  file.donated = std::move(values).takeValue();
  for (const VCard& card : cards) {
    file.skipped.insert(file.skipped.end(), card.skipped.begin(), card.skipped.end());
  }
  return Result<DonatedFile>::success(std::move(file));
}

CardPeople::CardPeople(const std::vector<CardInput>& inputs) {
  std::set<Fingerprint> known;
  for (const CardInput& input : inputs) {
    for (const VCard& card : input.cards) {
      if (!card.kind.empty() && card.kind != "individual") {
        others.push_back(callNameOf(card) + " (" + card.kind + ")");
      } else if (!hasName(card.contact)) {
        if (input.cards.size() > 1 && hasValue(card.contact)) people.push_back(callNameOf(card));
      } else {
        const auto name = PersonNameComponents::componentsForContact(card.contact);
        const bool isNew = known.insert(SuppressionNameEquivalence::keyOf(name)).second;
        if (isNew) people.push_back(callNameOf(card));
      }
    }
    for (const ErrorPtr& failure : input.failures) {
      if (isNotAPerson(*failure)) others.push_back(failure->debugDescription());
    }
  }
}

std::vector<std::string> keepCardsWith(const std::string& text, std::vector<CardInput>& inputs) {
  const std::string searched = canonicalKey(lowercased(text));
  std::vector<std::string> kept;
  for (CardInput& input : inputs) {
    std::erase_if(input.cards, [&](const VCard& card) { return !holds(card, searched); });
    for (const VCard& card : input.cards) kept.push_back(callNameOf(card));
    // A card that cannot be read may be the one that was meant.
    std::erase_if(input.failures, [](const auto& failure) { return isNotAPerson(*failure); });
  }
  std::erase_if(inputs, [](const CardInput& input) { return input.cards.empty(); });
  return kept;
}

}  // namespace quenlet
