#include "platform/logging/StructuredLog.h"

#include "platform/foundation/JSONWriter.h"

namespace quenlet {
namespace {

const char* nameOf(DonationKind kind) {
  switch (kind) {
    case DonationKind::name:
      return "name";
    case DonationKind::emailAddress:
      return "emailAddress";
    case DonationKind::phoneNumber:
      return "phoneNumber";
    case DonationKind::postalAddress:
      return "postalAddress";
    case DonationKind::imageData:
      break;
  }
  return "imageData";
}

void writeValue(JSONWriter& json, const DonationValue& value) {
  const DonationOrigin origin = value.origin();
  json.beginObject();
  json.key("kind").value(nameOf(value.kind()));
  json.key("bundleIdentifier").value(origin.bundleIdentifier);
  json.key("donationIdentifier").value(origin.donationIdentifier);
  json.endObject();
}

struct ArgumentWriter final {
  JSONWriter& json;

  void operator()(bool flag) const { json.value(flag); }
  void operator()(std::int64_t number) const { json.value(number); }
  void operator()(std::string_view text) const { json.value(text); }
  void operator()(Date date) const { json.value(date.iso8601()); }
  void operator()(const ErrorPtr& error) const {
    if (error) {
      json.value(error->description());
    } else {
      json.null();
    }
  }
  void operator()(const DonationValuePtr& value) const { writeValue(json, *value); }
  void operator()(std::reference_wrapper<const DonationValues> values) const {
    json.beginArray();
    for (const DonationValuePtr& value : values.get()) writeValue(json, *value);
    json.endArray();
  }
};

}  // namespace

void StructuredLog::record(std::string_view event,
                           std::initializer_list<LogArgument> arguments) const {
  constexpr std::size_t usualSizeInBytes = 128;
  JSONWriter json(usualSizeInBytes);
  json.beginObject();
  json.key("time").value(now().iso8601());
  json.key("event").value(event);
  if (arguments.size() > 0) {
    json.key("arguments").beginArray();
    for (const LogArgument& argument : arguments) std::visit(ArgumentWriter{json}, argument);
    json.endArray();
  }
  json.endObject();
  sink->write(json.text());
}

}  // namespace quenlet
