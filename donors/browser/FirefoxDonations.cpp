#include "donors/browser/FirefoxDonations.h"

#include <utility>

#include "donors/browser/FirefoxAddresses.h"
#include "donors/source/DonationCluster.h"
#include "foreign/ForeignFiles.h"
#include "foreign/Mailbox.h"
#include "foreign/MozillaProfiles.h"
#include "platform/contacts/PhoneNumber.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

using Record = FirefoxAddresses::Record;

constexpr char bundle[] = "org.quenlet.donors.firefox";
constexpr char fileName[] = "autofill-profiles.json";

// Empty for a text that nobody typed.
std::string textOf(const Record& record, std::string_view key) {
  const auto field = record.find(key);
  if (field == record.end() || !isPlainText(field->second)) return {};
  return std::string(trimmed(field->second));
}

std::optional<Name> nameOf(const Record& record) {
  // Since version 126 the name is one field, from which the others are made.
  const std::string given = textOf(record, "given-name");
  const std::string family = textOf(record, "family-name");
  if (given.empty() && family.empty()) return fullName(textOf(record, "name"));
  if (given.empty() || family.empty()) return std::nullopt;
  Name name{.givenName = given, .familyName = family};
  if (auto more = textOf(record, "additional-name"); !more.empty()) name.middleName = more;
  return name;
}

std::optional<Address> addressOf(const Record& record) {
  Address address{.street = textOf(record, "street-address"),
                  .subLocality = textOf(record, "address-level3"),
                  .city = textOf(record, "address-level2"),
                  .state = textOf(record, "address-level1"),
                  .postalCode = textOf(record, "postal-code")};
  if (address == Address()) return std::nullopt;
  const std::string code = textOf(record, "country");
  address.country = textOf(record, "country-name");
  if (address.country.empty()) address.country = code;
  if (code.size() == 2) address.isoCountryCode = lowercased(code);
  return address;
}

void addRecord(const std::string& profile, const Record& record, const OwnersName& owner,
               std::vector<Donation>& donations) {
  auto name = nameOf(record);
  if (!name || !owner.isThatOf(*name)) return;
  DonationCluster cluster(bundle, profile + "\n" + textOf(record, "guid"));
  if (auto address = addressOf(record)) {
    cluster.add(Postal{.address = *std::move(address)}, "address");
  }
  if (auto address = personalAddress(textOf(record, "email"))) {
    cluster.add(Email{.address = *std::move(address)}, "email");
  }
  if (auto number = textOf(record, "tel"); PhoneNumber::isNumber(number)) {
    cluster.add(Phone{.number = std::move(number)}, "phone");
  }
  if (cluster.isEmpty()) return;
  cluster.add(*std::move(name), "name");
  cluster.moveTo(donations);
}

ErrorPtr addProfile(const std::filesystem::path& profile, const OwnersName& owner,
                    std::vector<Donation>& donations) {
  const auto text = ForeignFiles::read(profile / fileName);
  if (!text.ok()) return text.error();
  if (!text.value()) return nullptr;
  const auto records = FirefoxAddresses::parse(*text.value());
  if (!records.ok()) return records.error();
  for (const Record& record : records.value()) {
    addRecord(profile.native(), record, owner, donations);
  }
  return nullptr;
}

}  // namespace

SourceDonor::Donations firefoxDonations(const UserPlaces& places, const OwnersName& owner) {
  using Donations = SourceDonor::Donations;
  const auto profiles = MozillaProfiles::in(
      {places.home / ".mozilla/firefox", places.configuration / "mozilla/firefox",
       places.home / "snap/firefox/common/.mozilla/firefox",
       places.home / ".var/app/org.mozilla.firefox/.mozilla/firefox"});
  if (!profiles.ok()) return Donations::failure(profiles.error());
  std::vector<Donation> donations;
  std::size_t number = 0;
  for (const std::filesystem::path& profile : profiles.value()) {
    ++number;
    if (const ErrorPtr error = addProfile(profile, owner, donations)) {
      return Donations::failure(ForeignFiles::locate(
          std::string(fileName) + " of profile " + std::to_string(number), *error));
    }
  }
  return Donations::success(std::move(donations));
}

}  // namespace quenlet
