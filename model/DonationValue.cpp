#include "model/DonationValue.h"

#include <algorithm>
#include <cassert>

namespace quenlet {
namespace {

// The records at the front of `texts` that go into one block. A single record keeps its whole block
// alive, so blocks must not be large, and a large record gets its own.
std::string_view enoughForBlock(std::string_view texts) {
  constexpr std::size_t enoughInBytes = std::size_t{1} << 16;
  constexpr std::string_view end = "</dict>\n";
  constexpr std::string_view endAndBeginning = "</dict>\n<dict>\n";
  if (texts.size() <= enoughInBytes) return texts;
  std::size_t last = texts.rfind(endAndBeginning, enoughInBytes);
  if (last == std::string_view::npos) last = texts.find(endAndBeginning);
  return last == std::string_view::npos ? texts : texts.substr(0, last + end.size());
}

[[maybe_unused]] bool readsBack(std::string_view text) {
  return DecodedDonation::takeFromTexts(text).has_value() && text.empty();
}

std::shared_ptr<const char[]> makeBlock(std::string_view texts) {
  auto block = std::make_shared_for_overwrite<char[]>(texts.size());
  std::copy(texts.begin(), texts.end(), block.get());
  return block;
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

std::uint8_t namePartsOf(const Value::Cases& content) {
  const auto* name = std::get_if<PersonNameComponents>(&content);
  unsigned parts = 0;
  for (std::size_t part = 0; name && part < nameComponentsByKey.size(); ++part) {
    if (name->*nameComponentsByKey[part].second) parts |= 1U << part;
  }
  return static_cast<std::uint8_t>(parts);
}

Fingerprint keyOfCluster(const std::optional<std::string>& identifier) {
  return identifier && !identifier->empty() ? DonationKeys::ofText(*identifier) : Fingerprint();
}

}  // namespace

DonationValue::DonationValue(DecodedDonation&& value, std::shared_ptr<const char> startOfText,
                             std::size_t sizeOfText)
    : kindOfContent(static_cast<DonationKind>(value.content.index())),
      partsOfName(namePartsOf(value.content)),
      textSize(static_cast<std::uint32_t>(sizeOfText)),
      expiration(value.origin.expirationDate),
      donation(DonationKeys::ofText(value.origin.donationIdentifier)),
      bundle(DonationKeys::ofText(value.origin.bundleIdentifier)),
      cluster(keyOfCluster(value.origin.clusterIdentifier)),
      content(std::visit(ContentKey{}, value.content)),
      text(std::move(startOfText)),
      kept(textSize == 0 || kindOfContent == DonationKind::imageData
               ? std::make_unique<const DecodedDonation>(std::move(value))
               : nullptr) {}

DonationValuePtr DonationValue::makeRecord(DecodedDonation value) {
  const std::string text = value.textRepresentation().value_or("");
  assert(text.empty() || readsBack(text));
  const auto block = makeBlock(text);
  return std::make_shared<const DonationValue>(
      std::move(value), std::shared_ptr<const char>(block, block.get()), text.size());
}

DonationValuePtr DonationValue::initWithPropertyListRepresentation(
    const PropertyListDictionary& entries) {
  std::optional<DecodedDonation> value = DecodedDonation::donationWithDictionary(entries);
  return value ? makeRecord(*std::move(value)) : nullptr;
}

bool DonationValue::takeFromPropertyListTexts(std::string_view& texts, DonationValues& values) {
  if (!texts.starts_with(DecodedDonation::beginningOfText)) return false;
  const std::size_t formerSize = values.size();
  const std::string_view together = enoughForBlock(texts);
  const auto block = makeBlock(together);
  std::string_view rest(block.get(), together.size());
  while (rest.starts_with(DecodedDonation::beginningOfText)) {
    const std::shared_ptr<const char> start(block, rest.data());
    std::optional<DecodedDonation> value = DecodedDonation::takeFromTexts(rest);
    if (!value) {
      values.resize(formerSize);
      return false;
    }
    const auto size = static_cast<std::size_t>(rest.data() - start.get());
    values.push_back(std::make_shared<const DonationValue>(*std::move(value), start, size));
  }
  texts.remove_prefix(together.size() - rest.size());
  return values.size() > formerSize;
}

DecodedDonation DonationValue::decoded() const {
  if (kept) return *kept;
  std::string_view written = *propertyListText();
  // Written or read before, when the record was made: it cannot fail.
  return *DecodedDonation::takeFromTexts(written);
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
  (visitor.*byKind[static_cast<std::size_t>(kindOfContent)])(*this);
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
