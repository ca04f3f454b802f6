#include "model/DonationValue.h"

#include <algorithm>

#include "model/ValueCaster.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "platform/foundation/PropertyListWriter.h"
#include "platform/foundation/Text.h"

// Blocks of records are drawn in the header. A save writes neighbouring records of a block in one
// go. The last record left keeps the whole block alive, so blocks must not be large.

namespace quenlet {
namespace {

constexpr std::size_t enoughForBlockInBytes = std::size_t{1} << 16;

std::shared_ptr<const char[]> makeBlock(std::string_view texts, std::string_view furtherKeys) {
  auto block = std::make_shared_for_overwrite<char[]>(texts.size() + furtherKeys.size());
  std::copy(texts.begin(), texts.end(), block.get());
  std::copy(furtherKeys.begin(), furtherKeys.end(), block.get() + texts.size());
  return block;
}

template <typename T>
std::shared_ptr<const LabeledValue<T>> makeEntry(T value, std::string label,
                                                 DonationOrigin origin) {
  return std::make_shared<const LabeledValue<T>>(
      LabeledValue<T>{std::move(label),
                      std::move(value),
                      {std::make_shared<const DonationOrigin>(std::move(origin))}});
}

// Calls the visitor's operation for each kind of content.
struct Visit final {
  const DonationValue& donation;
  DonationValueVisitor& visitor;

  void operator()(const PersonNameComponents& name) const {
    visitor.visitDonationValue(donation, name);
  }
  void operator()(const Value::EmailAddress& email) const {
    visitor.visitDonationValue(donation, email.address, email.label);
  }
  void operator()(const Value::PhoneNumber& phone) const {
    visitor.visitDonationValue(donation, *PhoneNumber::withStringValue(phone.number), phone.label);
  }
  void operator()(const Value::PostalAddress& postal) const {
    visitor.visitDonationValue(donation, postal.address, postal.style, postal.label);
  }
  void operator()(const Value::ImageData& image) const {
    visitor.visitDonationValue(donation, image.bytes);
  }
};

}  // namespace

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
  DigestMaker maker;
  DonationDigest digest;
  PropertyListWriter writer;
  writer.value(propertyListRepresentationOf(donation));
  const Result<std::string> written = std::move(writer).takeText();
  const std::string_view text = written.ok() ? std::string_view(written.value()) : "";
  // Parsed back to learn where the fields stand in the text.
  std::optional<DonationFields> fields = DonationTextReader(text).takeRecord();
  // Without them, the text would not be read back.
  if (fields && !fields->hasIdentifiers()) fields.reset();
  digest = fields ? maker.digestOfText(*fields, text) : maker.digestOfDonation(donation);
  DigestMaker::place(digest, digest.textSize);
  const auto block = makeBlock(text.substr(0, digest.textSize), maker.furtherKeys());
  std::unique_ptr<const DecodedDonation> kept;
  if (!fields || fields->kind == DonationKind::imageData) {
    kept = std::make_unique<const DecodedDonation>(std::move(donation));
  }
  return std::make_shared<const DonationValue>(
      digest, std::shared_ptr<const char>(block, block.get()), std::move(kept));
}

bool DonationValue::takeFromPropertyListTexts(std::string_view& texts, DonationValues& values) {
  DigestMaker maker;
  DonationTextReader reader(texts);
  std::vector<DonationDigest> digests;
  std::vector<std::unique_ptr<const DecodedDonation>> images;
  std::size_t size = 0;
  while (size < enoughForBlockInBytes && reader.remainder().starts_with("<dict>")) {
    const std::string_view start = reader.remainder();
    const std::optional<DonationFields> fields = reader.takeRecord();
    if (!fields || !fields->areValid()) return false;
    const std::size_t textSize = start.size() - reader.remainder().size();
    // A large record gets a block of its own.
    if (!digests.empty() && textSize > enoughForBlockInBytes) break;
    digests.push_back(maker.digestOfText(*fields, start.substr(0, textSize)));
    if (fields->kind == DonationKind::imageData) {
      images.push_back(std::make_unique<const DecodedDonation>(fields->decoded()));
    }
    size += textSize;
  }
  if (digests.empty()) return false;
  const auto block = makeBlock(texts.substr(0, size), maker.furtherKeys());
  auto nextImage = images.begin();
  std::size_t offset = 0;
  for (DonationDigest& digest : digests) {
    // Slices count from their own record's text.
    DigestMaker::place(digest, static_cast<std::uint32_t>(size - offset));
    const bool isImage = digest.kind == DonationKind::imageData;
    values.push_back(std::make_shared<const DonationValue>(
        digest, std::shared_ptr<const char>(block, block.get() + offset),
        isImage ? std::move(*nextImage++) : nullptr));
    offset += digest.textSize;
  }
  texts.remove_prefix(size);
  return true;
}

DecodedDonation DonationValue::decoded() const {
  if (kept) return *kept;
  // Parsed before, when the record was made: it cannot fail.
  return DonationTextReader(text({0, digest.textSize})).takeRecord()->decoded();
}

DonationValuePtr DonationValue::copyWithNewExpirationDate(Date expirationDate) const {
  DecodedDonation copy = decoded();
  copy.origin.expirationDate = expirationDate;
  return makeRecord(std::move(copy));
}

void DonationValue::acceptDonationValueVisitor(DonationValueVisitor& visitor) const {
  std::visit(Visit{*this, visitor}, decoded().content);
}

DonationValue::Value DonationValue::value() const { return *ValueCaster(*this).value; }

std::shared_ptr<const LabeledValue<std::string>> DonationValue::emailEntry() const {
  if (kind() != DonationKind::emailAddress) return nullptr;
  DecodedDonation donation = decoded();
  auto& email = std::get<Value::EmailAddress>(donation.content);
  return makeEntry(std::move(email.address), std::move(email.label), std::move(donation.origin));
}

std::shared_ptr<const LabeledValue<PhoneNumber>> DonationValue::phoneEntry() const {
  if (kind() != DonationKind::phoneNumber) return nullptr;
  DecodedDonation donation = decoded();
  auto& phone = std::get<Value::PhoneNumber>(donation.content);
  return makeEntry(*PhoneNumber::withStringValue(phone.number), std::move(phone.label),
                   std::move(donation.origin));
}

std::shared_ptr<const LabeledValue<PostalAddress>> DonationValue::postalEntry() const {
  if (kind() != DonationKind::postalAddress) return nullptr;
  DecodedDonation donation = decoded();
  auto& postal = std::get<Value::PostalAddress>(donation.content);
  return makeEntry(std::move(postal.address), std::move(postal.label), std::move(donation.origin));
}

std::optional<PersonNameComponents> DonationValue::nameComponents() const {
  if (!isName()) return std::nullopt;
  return std::get<PersonNameComponents>(decoded().content);
}

std::shared_ptr<const std::string> DonationValue::imageData() const {
  if (kind() != DonationKind::imageData) return nullptr;
  return std::get<Value::ImageData>(kept->content).bytes;
}

bool operator==(const DonationValue& a, const DonationValue& b) {
  const DecodedDonation left = a.decoded();
  const DecodedDonation right = b.decoded();
  if (!(left.origin == right.origin)) return false;
  const auto* image = std::get_if<Value::ImageData>(&left.content);
  const auto* other = std::get_if<Value::ImageData>(&right.content);
  if (image && other) return *image->bytes == *other->bytes;
  return a.value() == b.value();
}

}  // namespace quenlet
