#include "tools/presentation/DonationPresenter.h"

#include <variant>

#include "platform/foundation/JSONWriter.h"
#include "tools/presentation/TextTable.h"
#include "tools/presentation/ValueText.h"

namespace quenlet {
namespace {

struct ValueWriter final {
  JSONWriter& json;

  void operator()(const PersonNameComponents& name) const {
    json.key("value");
    DonationPresenter::writeTexts(json, name.dictionaryRepresentation());
  }
  void operator()(const Value::EmailAddress& email) const {
    json.key("value").value(email.address);
    DonationPresenter::writeLabel(json, email.label);
  }
  void operator()(const Value::PhoneNumber& phone) const {
    json.key("value").value(phone.number);
    DonationPresenter::writeLabel(json, phone.label);
  }
  void operator()(const Value::PostalAddress& postal) const {
    json.key("value");
    DonationPresenter::writeTexts(json, postal.address.dictionaryRepresentation());
    DonationPresenter::writeLabel(json, postal.label);
  }
  void operator()(const Value::ImageData& image) const {
    json.key("value").value(static_cast<std::int64_t>(image.bytes->size()));
  }
};

}  // namespace

void DonationPresenter::writeTable(std::ostream& out, const Screen& screen,
                                   const DonationValues& values) {
  using Fit = TextTable::Fit;
  TextTable table({{"KIND", Fit::whole},
                   "VALUE",
                   "LABEL",
                   {"BUNDLE", Fit::cut},
                   {"EXPIRES", Fit::whole},
                   {"DONATION", Fit::spare},
                   {"CLUSTER", Fit::spare},
                   {"DONATED", Fit::spare}});
  for (const DonationValuePtr& donation : values) {
    const Value value = donation->value();
    const DonationOrigin& origin = donation->decoded().origin;
    table.addRow({titleOfKind(value), textOf(value), labelOf(value), origin.bundleIdentifier,
                  dayOf(origin.expirationDate), origin.donationIdentifier,
                  origin.clusterIdentifier.value_or(""), dayOf(origin.donationDate)});
  }
  table.write(out, screen);
}

void DonationPresenter::writeContent(JSONWriter& json, const Value& value) {
  json.key("kind").value(kindOf(value));
  writeValue(json, value);
}

void DonationPresenter::writeValue(JSONWriter& json, const Value& value) {
  std::visit(ValueWriter{json}, value.cases());
}

void DonationPresenter::writeOrigin(JSONWriter& json, const DonationOrigin& origin) {
  json.beginObject();
  json.key("bundleIdentifier").value(origin.bundleIdentifier);
  json.key("donationIdentifier").value(origin.donationIdentifier);
  if (origin.clusterIdentifier) json.key("clusterIdentifier").value(*origin.clusterIdentifier);
  json.key("donationDate").value(origin.donationDate.iso8601());
  json.key("expirationDate").value(origin.expirationDate.iso8601());
  json.endObject();
}

void DonationPresenter::writeLabel(JSONWriter& json, const std::string& label) {
  if (!label.empty()) json.key("label").value(label);
}

void DonationPresenter::writeBareValue(JSONWriter& json, const std::string& emailAddress) {
  json.value(emailAddress);
}

void DonationPresenter::writeBareValue(JSONWriter& json, const PhoneNumber& number) {
  json.value(number.stringValue());
}

void DonationPresenter::writeBareValue(JSONWriter& json, const PostalAddress& address) {
  writeTexts(json, address.dictionaryRepresentation());
}

void DonationPresenter::writeTexts(JSONWriter& json, const PropertyListDictionary& texts) {
  json.beginObject();
  for (const auto& [key, text] : texts) {
    if (text.string()) json.key(key).value(*text.string());
  }
  json.endObject();
}

}  // namespace quenlet
