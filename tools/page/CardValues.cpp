#include "tools/page/CardValues.h"

#include <initializer_list>
#include <unordered_map>
#include <utility>

#include "platform/foundation/KeyedHash.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

std::vector<std::string> linesOf(PostalAddress address) {
  std::vector<std::string> lines;
  std::string_view street = address.street;
  while (!street.empty()) {
    const std::size_t end = street.find_first_of("\r\n");
    const std::string_view line = trimmed(street.substr(0, end));
    if (!line.empty()) lines.emplace_back(line);
    street.remove_prefix(end == std::string_view::npos ? street.size() : end + 1);
  }
  address.street.clear();
  std::string rest = textOf(address);
  if (!rest.empty()) lines.push_back(std::move(rest));
  return lines;
}

std::vector<std::string> linesOf(const Value& value) {
  const auto* postal = std::get_if<Value::PostalAddress>(&value.cases());
  return postal ? linesOf(postal->address) : std::vector<std::string>{textOf(value)};
}

// Collects the values of one kind.
class Collector final {
 public:
  explicit Collector(DonationKind wantedKind) : kind(wantedKind) {}

  void addOwn(const Contact& contact);
  void addDonated(const PageDonation& donation);
  [[nodiscard]] std::vector<CardValue> take() && { return std::move(values); }

 private:
  // Stands for a value of the owner's own card, so that equal contents have equal keys.
  void addOwn(const DonationValuePtr& asDonation);
  void rememberContent(const DonationValue& donation, std::size_t place);
  // Where the value of a donation is; nowhere for one that is left out alone.
  [[nodiscard]] const std::size_t* placeOf(const StatedDonation& stated) const;

  const DonationKind kind;
  std::vector<CardValue> values;
  std::unordered_map<Fingerprint, std::size_t, FingerprintHash> placesByContent;
  std::unordered_map<const DonationValue*, std::size_t> placesByDonation;
};

void Collector::addOwn(const Contact& contact) {
  const DonationOrigin none({}, {}, {}, {});
  if (kind == DonationKind::emailAddress) {
    for (const auto& entry : contact.emailAddresses()) {
      addOwn(DonationValue::donationValueWithEmailAddress(entry->value, entry->label, none));
    }
  } else if (kind == DonationKind::phoneNumber) {
    for (const auto& entry : contact.phoneNumbers()) {
      addOwn(DonationValue::donationValueWithPhoneNumber(entry->value, entry->label, none));
    }
  } else if (kind == DonationKind::postalAddress) {
    for (const auto& entry : contact.postalAddresses()) {
      addOwn(DonationValue::donationValueWithPostalAddress(
          entry->value, PostalAddressStyle::mailingAddress, entry->label, none));
    }
  }
}

void Collector::addOwn(const DonationValuePtr& asDonation) {
  const Value value = asDonation->value();
  rememberContent(*asDonation, values.size());
  values.push_back({linesOf(value), labelOf(value), true, {}});
}

void Collector::addDonated(const PageDonation& donation) {
  const StatedDonation& stated = donation.stated;
  if (stated.donation->kind() != kind) return;
  if (const std::size_t* place = placeOf(stated)) {
    values[*place].sources.push_back(&donation);
    placesByDonation.emplace(stated.donation.get(), *place);
  } else if (stated.isShown()) {
    rememberContent(*stated.donation, values.size());
    placesByDonation.emplace(stated.donation.get(), values.size());
    values.push_back({linesOf(donation.value), labelOf(donation.value), false, {&donation}});
  }
}

void Collector::rememberContent(const DonationValue& donation, std::size_t place) {
  if (donation.contentKey()) placesByContent.emplace(donation.contentKey(), place);
}

const std::size_t* Collector::placeOf(const StatedDonation& stated) const {
  if (stated.other) {
    const auto found = placesByDonation.find(stated.other.get());
    if (stated.state == DonationState::givenBefore && found != placesByDonation.end()) {
      return &found->second;
    }
  }
  if (!stated.isShown() && stated.state != DonationState::ownCardHasIt) return nullptr;
  const auto found = placesByContent.find(stated.donation->contentKey());
  return found == placesByContent.end() ? nullptr : &found->second;
}

}  // namespace

std::vector<CardValue> cardValuesOf(DonationKind kind, const PageContent& content) {
  Collector collector(kind);
  if (content.own.contact) collector.addOwn(*content.own.contact);
  for (const PageDonation& donation : content.donations) collector.addDonated(donation);
  return std::move(collector).take();
}

}  // namespace quenlet
