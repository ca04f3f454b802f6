#include "model/DonationText.h"

#include <charconv>
#include <cmath>
#include <utility>

#include "platform/contacts/PhoneNumber.h"
#include "platform/foundation/Base64.h"
#include "platform/foundation/PropertyListWriter.h"
#include "platform/foundation/XMLText.h"

namespace quenlet {
namespace {

// Writes one record; the operation for its kind puts the keys in ascending order.
class RecordWriter final {
 public:
  explicit RecordWriter(const DonationOrigin& donationOrigin) : origin(donationOrigin) {}

  void operator()(const PersonNameComponents& name) {
    writer.key(DonationValueNameComponentsKey);
    writer.beginDictionary();
    for (const auto& [key, component] : nameComponentsByKey) {
      if (name.*component) addString(key, *(name.*component));
    }
    writer.endDictionary();
    addOrigin();
  }
  void operator()(const Value::EmailAddress& email) {
    addString(DonationValueEmailAddressKey, email.address);
    addString(DonationValueLabelKey, email.label);
    addOrigin();
  }
  void operator()(const Value::PhoneNumber& phone) {
    addString(DonationValueLabelKey, phone.label);
    addOrigin();
    addString(DonationValuePhoneNumberKey, phone.number);
  }
  void operator()(const Value::PostalAddress& postal) {
    addString(DonationValueLabelKey, postal.label);
    addOrigin();
    writer.key(DonationValuePostalAddressKey);
    writer.beginDictionary();
    for (const auto& [key, field] : postalFieldsByKey) {
      if (!(postal.address.*field).empty()) addString(key, postal.address.*field);
    }
    writer.endDictionary();
    writer.key(DonationText::styleKey);
    writer.integer(static_cast<std::int64_t>(postal.style));
  }
  void operator()(const Value::ImageData& image) {
    writer.key(DonationText::imageDataKey);
    writer.data(*image.bytes);
    addOrigin();
  }

  PropertyListWriter writer;

 private:
  void addString(std::string_view key, std::string_view text) {
    writer.key(key);
    writer.string(text);
  }
  void addDate(std::string_view key, Date date) {
    writer.key(key);
    writer.real(date.secondsSince1970());
  }
  void addOrigin() {
    writer.key(DonationText::originKey);
    writer.beginDictionary();
    addString(DonationOrigin::bundleIdentifierKey, origin.bundleIdentifier);
    if (origin.clusterIdentifier) {
      addString(DonationOrigin::clusterIdentifierKey, *origin.clusterIdentifier);
    }
    addDate(DonationOrigin::donationDateKey, origin.donationDate);
    addString(DonationOrigin::donationIdentifierKey, origin.donationIdentifier);
    addDate(DonationOrigin::expirationDateKey, origin.expirationDate);
    writer.endDictionary();
  }

  const DonationOrigin& origin;
};

// Reads records straight from their text.
class RecordReader final {
 public:
  explicit RecordReader(std::string_view& text) : rest(text) {}

  std::optional<DecodedDonation> takeRecord();

 private:
  bool take(std::string_view expected);
  bool takeText(std::string& text);
  bool takeString(std::string& text) { return takeText(text) && take("</string>\n"); }
  template <typename Number>
  bool takeNumber(Number& number);
  bool takeOrigin();
  bool takeLabelAndOrigin(std::string& label);
  std::optional<Value::Cases> takeContent();
  std::optional<Value::Cases> takeImage();
  // Takes the entries of a dictionary whose keys are in `fields`, and its end.
  template <typename Fields, typename Owner>
  bool takeDictionary(const Fields& fields, Owner& owner);

  std::string_view& rest;
  DonationOrigin origin{"", "", Date(), Date()};
};

bool RecordReader::take(std::string_view expected) {
  if (!rest.starts_with(expected)) return false;
  rest.remove_prefix(expected.size());
  return true;
}

// Takes the text up to the next tag, if the writer could have written it. Saves copy accepted text
// as it is, so nothing may pass that the general reader would refuse or change, such as a CR.
bool RecordReader::takeText(std::string& text) {
  std::size_t size = lengthOfPlainPrefix(rest);
  if (size < rest.size() && rest[size] == '&') {
    size = rest.find('<', size);
    const std::string_view escaped = rest.substr(0, size);
    if (escaped.find('\r') != std::string_view::npos ||
        findForbiddenCharacter(escaped) != std::string_view::npos ||
        !appendUnescapedXML(text, escaped)) {
      return false;
    }
  } else {
    text = rest.substr(0, size);
  }
  if (size >= rest.size() || rest[size] != '<') return false;
  rest.remove_prefix(size);
  return true;
}

template <typename Number>
bool RecordReader::takeNumber(Number& number) {
  const std::size_t size = std::min(rest.find('<'), rest.size());
  const char* end = rest.data() + size;
  const auto [stop, failure] = std::from_chars(rest.data(), end, number);
  rest.remove_prefix(size);
  return failure == std::errc() && stop == end;
}

template <typename Fields, typename Owner>
bool RecordReader::takeDictionary(const Fields& fields, Owner& owner) {
  // Only forward: a key that repeats or is out of order is not found.
  auto field = fields.begin();
  while (take("<key>")) {
    const std::string_view key = rest.substr(0, rest.find('<'));
    while (field != fields.end() && field->first != key) ++field;
    if (field == fields.end() || !take(key) || !take("</key><string>")) return false;
    std::string text;
    if (!takeString(text)) return false;
    owner.*(field->second) = std::move(text);
    ++field;
  }
  return take("</dict>\n");
}

bool RecordReader::takeOrigin() {
  double donated = 0;
  double expires = 0;
  if (!take("<key>origin</key><dict>\n<key>bundleIdentifier</key><string>") ||
      !takeString(origin.bundleIdentifier) || !take("<key>")) {
    return false;
  }
  if (take("clusterIdentifier</key><string>") &&
      (!takeString(origin.clusterIdentifier.emplace()) || !take("<key>"))) {
    return false;
  }
  if (!take("donationDate</key><real>") || !takeNumber(donated) ||
      !take("</real>\n<key>donationIdentifier</key><string>") ||
      !takeString(origin.donationIdentifier) || !take("<key>expirationDate</key><real>") ||
      !takeNumber(expires) || !take("</real>\n</dict>\n")) {
    return false;
  }
  origin.donationDate = Date(donated);
  origin.expirationDate = Date(expires);
  return std::isfinite(donated) && std::isfinite(expires) && !origin.bundleIdentifier.empty() &&
         !origin.donationIdentifier.empty();
}

bool RecordReader::takeLabelAndOrigin(std::string& label) {
  return take("<key>label</key><string>") && takeString(label) && takeOrigin();
}

std::optional<Value::Cases> RecordReader::takeImage() {
  // Base64 has no references: one makes the decoding fail.
  std::optional<std::string> bytes = decodedBase64(rest.substr(0, rest.find('<')));
  if (!bytes) return std::nullopt;
  rest.remove_prefix(std::min(rest.find('<'), rest.size()));
  if (!take("</data>\n") || !takeOrigin()) return std::nullopt;
  return Value::ImageData{std::make_shared<const std::string>(*std::move(bytes))};
}

// The first key of a record tells its kind.
std::optional<Value::Cases> RecordReader::takeContent() {
  std::string text;
  std::string label;
  if (take("<key>emailAddress</key><string>")) {
    if (!takeString(text) || !takeLabelAndOrigin(label)) return std::nullopt;
    return Value::EmailAddress{std::move(text), std::move(label)};
  }
  if (take("<key>nameComponents</key><dict>\n")) {
    PersonNameComponents name;
    if (!takeDictionary(nameComponentsByKey, name) || !takeOrigin()) return std::nullopt;
    return name;
  }
  if (take("<key>imageData</key><data>")) return takeImage();
  if (!takeLabelAndOrigin(label)) return std::nullopt;
  if (take("<key>phoneNumber</key><string>")) {
    if (!takeString(text) || !PhoneNumber::isNumber(text)) return std::nullopt;
    return Value::PhoneNumber{std::move(text), std::move(label)};
  }
  PostalAddress address;
  std::int64_t style = 0;
  if (!take("<key>postalAddress</key><dict>\n") || !takeDictionary(postalFieldsByKey, address) ||
      !take("<key>style</key><integer>") || !takeNumber(style) || !take("</integer>\n")) {
    return std::nullopt;
  }
  return Value::PostalAddress{std::move(address), static_cast<PostalAddressStyle>(style),
                              std::move(label)};
}

std::optional<DecodedDonation> RecordReader::takeRecord() {
  if (!take("<dict>\n")) return std::nullopt;
  std::optional<Value::Cases> content = takeContent();
  if (!content || !take("</dict>\n")) return std::nullopt;
  return DecodedDonation{*std::move(content), std::move(origin)};
}

}  // namespace

std::optional<std::string> DonationText::write(const DecodedDonation& donation) {
  if (donation.origin.bundleIdentifier.empty() || donation.origin.donationIdentifier.empty()) {
    return std::nullopt;
  }
  RecordWriter record(donation.origin);
  record.writer.beginDictionary();
  std::visit(record, donation.content);
  record.writer.endDictionary();
  Result<std::string> text = std::move(record.writer).takeText();
  return text.ok() ? std::optional(std::move(text).takeValue()) : std::nullopt;
}

std::optional<DecodedDonation> DonationText::take(std::string_view& text) {
  return RecordReader(text).takeRecord();
}

}  // namespace quenlet
