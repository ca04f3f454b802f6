#include "model/DonationValue.h"

#include "model/ValueCaster.h"
#include "platform/contacts/PostalAddressFormatter.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

std::shared_ptr<const DonationOrigin> share(DonationOrigin origin) {
  return std::make_shared<const DonationOrigin>(std::move(origin));
}

DonationValuePtr makeRecord(DonationValue::Content content,
                            std::shared_ptr<const DonationOrigin> origin) {
  return std::make_shared<const DonationValue>(std::move(content), std::move(origin));
}

// Completes the keys by those of the content.
struct ContentKeys final {
  ComparisonKeys& keys;

  void operator()(const PersonNameComponents& name) const { keys.name = NameKey::keyForName(name); }
  void operator()(const LabeledValue<std::string>& entry) const {
    keys.emailAddress = canonicalKey(entry.value);
    keys.entry = canonicalKey(lowercased(entry.value));
  }
  void operator()(const LabeledValue<PhoneNumber>& entry) const {
    keys.entry = canonicalKey(entry.value.stringValue());
  }
  void operator()(const DonationValue::Postal& postal) const {
    const std::optional<std::string> line =
        PostalAddressFormatter::singleLineStringFromPostalAddress(postal.entry.value,
                                                                  CountryName::leftOut);
    if (line) keys.entry = canonicalKey(lowercased(*line));
  }
  void operator()(const DonationValue::Image&) const {}
};

ComparisonKeys makeKeys(const DonationValue::Content& content, const DonationOrigin& origin) {
  ComparisonKeys keys;
  keys.bundleIdentifier = canonicalKey(origin.bundleIdentifier);
  keys.donationIdentifier = canonicalKey(origin.donationIdentifier);
  keys.clusterIdentifier = canonicalKey(origin.clusterIdentifier.value_or(""));
  std::visit(ContentKeys{keys}, content);
  return keys;
}

}  // namespace

DonationValue::DonationValue(Content kindAndContent, std::shared_ptr<const DonationOrigin> origin)
    : originRecord(std::move(origin)),
      content(std::move(kindAndContent)),
      comparisonKeys(makeKeys(content, *originRecord)) {}

DonationValuePtr DonationValue::donationValueWithNameComponents(PersonNameComponents name,
                                                                DonationOrigin origin) {
  return makeRecord(std::move(name), share(std::move(origin)));
}

DonationValuePtr DonationValue::donationValueWithEmailAddress(std::string emailAddress,
                                                              std::string label,
                                                              DonationOrigin origin) {
  auto shared = share(std::move(origin));
  return makeRecord(LabeledValue<std::string>{std::move(label), std::move(emailAddress), {shared}},
                    shared);
}

DonationValuePtr DonationValue::donationValueWithPhoneNumber(PhoneNumber phoneNumber,
                                                             std::string label,
                                                             DonationOrigin origin) {
  auto shared = share(std::move(origin));
  return makeRecord(LabeledValue<PhoneNumber>{std::move(label), std::move(phoneNumber), {shared}},
                    shared);
}

DonationValuePtr DonationValue::donationValueWithPostalAddress(PostalAddress postalAddress,
                                                               PostalAddressStyle style,
                                                               std::string label,
                                                               DonationOrigin origin) {
  auto shared = share(std::move(origin));
  LabeledValue<PostalAddress> entry{std::move(label), std::move(postalAddress), {shared}};
  return makeRecord(Postal{std::move(entry), style}, shared);
}

DonationValuePtr DonationValue::donationValueWithImageData(std::string imageData,
                                                           DonationOrigin origin) {
  return makeRecord(Image{std::make_shared<const std::string>(std::move(imageData))},
                    share(std::move(origin)));
}

DonationValuePtr DonationValue::copyWithNewExpirationDate(Date expirationDate) const {
  DonationOrigin changed = *originRecord;
  changed.expirationDate = expirationDate;
  auto shared = share(std::move(changed));
  Content copy = content;
  if (auto* email = std::get_if<LabeledValue<std::string>>(&copy)) {
    email->storeInfo = {shared};
  } else if (auto* phone = std::get_if<LabeledValue<PhoneNumber>>(&copy)) {
    phone->storeInfo = {shared};
  } else if (auto* postal = std::get_if<Postal>(&copy)) {
    postal->entry.storeInfo = {shared};
  }
  return makeRecord(std::move(copy), std::move(shared));
}

void DonationValue::acceptDonationValueVisitor(DonationValueVisitor& visitor) const {
  struct Call final {
    const DonationValue& donation;
    DonationValueVisitor& visitor;

    void operator()(const PersonNameComponents& name) const {
      visitor.visitDonationValue(donation, name);
    }
    void operator()(const LabeledValue<std::string>& entry) const {
      visitor.visitDonationValue(donation, entry.value, entry.label);
    }
    void operator()(const LabeledValue<PhoneNumber>& entry) const {
      visitor.visitDonationValue(donation, entry.value, entry.label);
    }
    void operator()(const Postal& postal) const {
      visitor.visitDonationValue(donation, postal.entry.value, postal.style, postal.entry.label);
    }
    void operator()(const Image& image) const { visitor.visitDonationValue(donation, image.bytes); }
  };
  std::visit(Call{*this, visitor}, content);
}

Value DonationValue::value() const { return *ValueCaster(*this).value(); }

std::shared_ptr<const LabeledValue<std::string>> DonationValue::emailEntry() const {
  return {shared_from_this(), std::get_if<LabeledValue<std::string>>(&content)};
}

std::shared_ptr<const LabeledValue<PhoneNumber>> DonationValue::phoneEntry() const {
  return {shared_from_this(), std::get_if<LabeledValue<PhoneNumber>>(&content)};
}

std::shared_ptr<const LabeledValue<PostalAddress>> DonationValue::postalEntry() const {
  const auto* postal = std::get_if<Postal>(&content);
  return {shared_from_this(), postal ? &postal->entry : nullptr};
}

bool operator==(const DonationValue& a, const DonationValue& b) {
  return *a.originRecord == *b.originRecord && a.content == b.content;
}

}  // namespace quenlet
