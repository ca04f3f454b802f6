#include "tools/presentation/ValueText.h"

#include <initializer_list>
#include <variant>

#include "platform/contacts/PostalAddressFormatter.h"
#include "tools/presentation/ImageType.h"

namespace quenlet {
namespace {

struct Kind final {
  const char* operator()(const PersonNameComponents&) const { return "name"; }
  const char* operator()(const Value::EmailAddress&) const { return "emailAddress"; }
  const char* operator()(const Value::PhoneNumber&) const { return "phoneNumber"; }
  const char* operator()(const Value::PostalAddress&) const { return "postalAddress"; }
  const char* operator()(const Value::ImageData&) const { return "imageData"; }
};

struct TitleOfKind final {
  const char* operator()(const PersonNameComponents&) const { return "name"; }
  const char* operator()(const Value::EmailAddress&) const { return "e-mail"; }
  const char* operator()(const Value::PhoneNumber&) const { return "phone"; }
  const char* operator()(const Value::PostalAddress&) const { return "address"; }
  const char* operator()(const Value::ImageData&) const { return "image"; }
};

struct Label final {
  std::string operator()(const PersonNameComponents&) const { return {}; }
  std::string operator()(const Value::ImageData&) const { return {}; }
  template <typename Entry>
  std::string operator()(const Entry& entry) const {
    return entry.label;
  }
};

struct Text final {
  std::string operator()(const PersonNameComponents& name) const { return textOf(name); }
  std::string operator()(const Value::EmailAddress& email) const { return email.address; }
  std::string operator()(const Value::PhoneNumber& phone) const { return phone.number; }
  std::string operator()(const Value::PostalAddress& postal) const {
    return textOf(postal.address);
  }
  std::string operator()(const Value::ImageData& image) const { return imageText(*image.bytes); }
};

}  // namespace

const char* kindOf(const Value& value) { return std::visit(Kind{}, value.cases()); }

const char* titleOfKind(const Value& value) { return std::visit(TitleOfKind{}, value.cases()); }

std::string labelOf(const Value& value) { return std::visit(Label{}, value.cases()); }

std::string textOf(const Value& value) { return std::visit(Text{}, value.cases()); }

std::string shownText(const Value& value) {
  const auto* image = std::get_if<Value::ImageData>(&value.cases());
  return image && image->bytes->empty() ? "an image" : textOf(value);
}

std::string textOf(const PersonNameComponents& name) {
  std::string text;
  for (const std::optional<std::string>* part :
       {&name.namePrefix, &name.givenName, &name.middleName, &name.familyName, &name.nameSuffix}) {
    if (!*part || (*part)->empty()) continue;
    if (!text.empty()) text += ' ';
    text += **part;
  }
  if (name.nickname && !name.nickname->empty()) {
    if (!text.empty()) text += ' ';
    text += '"' + *name.nickname + '"';
  }
  return text;
}

std::string textOf(const PostalAddress& address) {
  return PostalAddressFormatter::singleLineStringFromPostalAddress(address, CountryName::included)
      .value_or("");
}

std::string imageText(std::string_view imageData) {
  const std::optional<ImageType> type = ImageType::of(imageData);
  return std::to_string(imageData.size()) + " bytes, " + (type ? type->name : "unknown type");
}

std::string dayOf(Date date) {
  const std::string instant = date.iso8601();
  return instant.substr(0, instant.find('T'));
}

}  // namespace quenlet
