#pragma once

#include <ostream>

#include "model/DonationValue.h"
#include "tools/presentation/Screen.h"

namespace quenlet {

class JSONWriter;

// Shows lists of donations. Stateless.
class DonationPresenter final {
 public:
  DonationPresenter() = delete;

  // One line per donation, under headings; nothing for an empty list.
  static void writeTable(std::ostream& out, const Screen& screen, const DonationValues& values);
  // "kind", "value" and, if it has one, "label". The value of a name or postal address is an
  // object, that of an image its size in bytes.
  static void writeContent(JSONWriter& json, const Value& value);
  // The same without "kind".
  static void writeValue(JSONWriter& json, const Value& value);
  static void writeOrigin(JSONWriter& json, const DonationOrigin& origin);
  // The key "label" and the label; nothing for an empty label.
  static void writeLabel(JSONWriter& json, const std::string& label);
  // What stands under "value" for an e-mail address, a phone number and a postal address.
  static void writeBareValue(JSONWriter& json, const std::string& emailAddress);
  static void writeBareValue(JSONWriter& json, const PhoneNumber& number);
  static void writeBareValue(JSONWriter& json, const PostalAddress& address);
  // An object of the texts in a flat dictionary.
  static void writeTexts(JSONWriter& json, const PropertyListDictionary& texts);
};

}  // namespace quenlet
