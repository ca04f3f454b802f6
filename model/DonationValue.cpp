#include "model/DonationValue.h"

#include <algorithm>
#include <cassert>

#include "model/DonationPropertyList.h"
#include "model/SuppressionNameEquivalence.h"

namespace quenlet {
namespace {

// The last record left keeps its whole block alive, so blocks must not be large.
constexpr std::size_t enoughForBlockInBytes = std::size_t{1} << 16;

std::shared_ptr<const char[]> makeBlock(std::string_view texts) {
  auto block = std::make_shared_for_overwrite<char[]>(texts.size());
  std::copy(texts.begin(), texts.end(), block.get());
  return block;
}

[[maybe_unused]] bool readsBack(std::string_view text) {
  return DonationText::take(text).has_value() && text.empty();
}

struct ContentKey final {
  Fingerprint operator()(const PersonNameComponents& name) const {
    return SuppressionNameEquivalence::keyOf(name);
  }
  Fingerprint operator()(const Value::EmailAddress& email) const {
    return DonationKeys::ofFoldedText(email.address);
  }
  Fingerprint operator()(const Value::PhoneNumber& phone) const {
    return DonationKeys::ofText(phone.number);
  }
  Fingerprint operator()(const Value::PostalAddress& postal) const {
    return DonationKeys::ofPostalAddress(postal.address);
  }
  Fingerprint operator()(const Value::ImageData&) const { return {}; }
};

}  // namespace

DonationValue::Digest::Digest(const DecodedDonation& decoded, std::size_t textSizeInBytes)
    : kind(static_cast<DonationKind>(decoded.content.index())),
      textSize(static_cast<std::uint32_t>(textSizeInBytes)),
      expirationDate(decoded.origin.expirationDate),
      donation(DonationKeys::ofText(decoded.origin.donationIdentifier)),
      bundle(DonationKeys::ofText(decoded.origin.bundleIdentifier)),
      content(std::visit(ContentKey{}, decoded.content)) {
  const std::string& clusterIdentifier = decoded.origin.clusterIdentifier.value_or("");
  if (!clusterIdentifier.empty()) cluster = DonationKeys::ofText(clusterIdentifier);
}

DonationValuePtr DonationValue::donationValueWithNameComponents(PersonNameComponents name,
                                                                DonationOrigin origin) {
  return makeRecord({std::move(name), std::move(origin)});
}

DonationValuePtr DonationValue::donationValueWithEmailAddress(std::string emailAddress,
                                                              std::string label,
                                                              DonationOrigin origin) {
  return makeRecord(
      {Value::EmailAddress{std::move(emailAddress), std::move(label)}, std::move(origin)});
}

DonationValuePtr DonationValue::donationValueWithPhoneNumber(const PhoneNumber& phoneNumber,
                                                             std::string label,
                                                             DonationOrigin origin) {
  return makeRecord(
      {Value::PhoneNumber{phoneNumber.stringValue(), std::move(label)}, std::move(origin)});
}

DonationValuePtr DonationValue::donationValueWithPostalAddress(PostalAddress postalAddress,
                                                               PostalAddressStyle style,
                                                               std::string label,
                                                               DonationOrigin origin) {
  return makeRecord(
      {Value::PostalAddress{std::move(postalAddress), style, std::move(label)}, std::move(origin)});
}

DonationValuePtr DonationValue::donationValueWithImageData(std::string imageData,
                                                           DonationOrigin origin) {
  return makeRecord({Value::ImageData{std::make_shared<const std::string>(std::move(imageData))},
                     std::move(origin)});
}

DonationValuePtr DonationValue::makeRecord(DecodedDonation donation) {
  const std::string text = DonationText::write(donation).value_or("");
  assert(text.empty() || readsBack(text));
  const Digest digest(donation, text.size());
  const auto block = makeBlock(text);
  Kept kept;
  if (text.empty() || digest.kind == DonationKind::imageData) {
    kept = std::make_unique<const DecodedDonation>(std::move(donation));
  }
  return std::make_shared<const DonationValue>(
      digest, std::shared_ptr<const char>(block, block.get()), std::move(kept));
}

bool DonationValue::takeFromPropertyListTexts(std::string_view& texts, DonationValues& values) {
  std::vector<std::pair<Digest, Kept>> taken;
  std::string_view rest = texts;
  std::size_t size = 0;
  while (size < enoughForBlockInBytes && rest.starts_with(DonationText::beginning)) {
    std::optional<DecodedDonation> donation = DonationText::take(rest);
    if (!donation) return false;
    const std::size_t textSize = texts.size() - rest.size() - size;
    // A large record gets a block of its own.
    if (!taken.empty() && textSize > enoughForBlockInBytes) break;
    const Digest digest(*donation, textSize);
    taken.emplace_back(digest, nullptr);
    if (digest.kind == DonationKind::imageData) {
      taken.back().second = std::make_unique<const DecodedDonation>(*std::move(donation));
    }
    size += textSize;
  }
  if (taken.empty()) return false;
  const auto block = makeBlock(texts.substr(0, size));
  const char* start = block.get();
  for (auto& [digest, kept] : taken) {
    values.push_back(std::make_shared<const DonationValue>(
        digest, std::shared_ptr<const char>(block, start), std::move(kept)));
    start += digest.textSize;
  }
  texts.remove_prefix(size);
  return true;
}

DonationValuePtr DonationValue::initWithPropertyListRepresentation(
    const PropertyListDictionary& entries) {
  std::optional<DecodedDonation> donation = DonationPropertyList::read(entries);
  return donation ? makeRecord(*std::move(donation)) : nullptr;
}

PropertyListDictionary DonationValue::propertyListRepresentation() const {
  return DonationPropertyList::write(decoded());
}

DecodedDonation DonationValue::decoded() const {
  if (kept) return *kept;
  std::string_view written = *propertyListText();
  // Written or read before, when the record was made: it cannot fail.
  return *DonationText::take(written);
}

DonationValue::Value DonationValue::value() const {
  DecodedDonation donation = decoded();
  return Value(std::move(donation.content));
}

DonationValuePtr DonationValue::copyWithNewExpirationDate(Date expirationDate) const {
  DecodedDonation copy = decoded();
  copy.origin.expirationDate = expirationDate;
  return makeRecord(std::move(copy));
}

void DonationValue::acceptDonationValueVisitor(DonationValueVisitor& visitor) const {
  using Visit = void (DonationValueVisitor::*)(const DonationValue&);
  static constexpr Visit byKind[] = {
      &DonationValueVisitor::visitNameComponents, &DonationValueVisitor::visitEmailAddress,
      &DonationValueVisitor::visitPhoneNumber, &DonationValueVisitor::visitPostalAddress,
      &DonationValueVisitor::visitImageData};
  (visitor.*byKind[static_cast<std::size_t>(digest.kind)])(*this);
}

bool operator==(const DonationValue& a, const DonationValue& b) {
  const DecodedDonation first = a.decoded();
  const DecodedDonation second = b.decoded();
  if (!(first.origin == second.origin)) return false;
  const auto* image = std::get_if<Value::ImageData>(&first.content);
  const auto* other = std::get_if<Value::ImageData>(&second.content);
  if (image && other) return *image->bytes == *other->bytes;
  return Value(first.content) == Value(second.content);
}

}  // namespace quenlet
