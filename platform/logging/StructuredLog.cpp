#include "platform/logging/StructuredLog.h"

#include "platform/foundation/JSONWriter.h"

namespace quenlet {
namespace {

struct KindName final {
  const char* operator()(const PersonNameComponents&) const { return "name"; }
  const char* operator()(const Value::EmailAddress&) const { return "emailAddress"; }
  const char* operator()(const Value::PhoneNumber&) const { return "phoneNumber"; }
  const char* operator()(const Value::PostalAddress&) const { return "postalAddress"; }
  const char* operator()(const Value::ImageData&) const { return "imageData"; }
};

void writeValue(JSONWriter& json, const DonationValue& value) {
  json.beginObject();
  json.key("kind").value(std::visit(KindName{}, value.value().cases()));
  json.key("bundleIdentifier").value(value.origin().bundleIdentifier);
  json.key("donationIdentifier").value(value.origin().donationIdentifier);
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
