#include "platform/donations/DonationWire.h"

#include "platform/donations/DonationError.h"
#include "platform/ipc/ServiceInterface.h"

namespace quenlet {
namespace {

// A record of ours has about twenty.
constexpr std::size_t maximumValuesInRecord = 1000;

using DecodedList = Result<DonationValues>;

}  // namespace

void DonationWire::encodeValue(WireEncoder& encoder, const DonationValue& value) {
  encoder.object(className).propertyList(value.propertyListRepresentation());
}

DonationValuePtr DonationWire::decodeValue(WireReader& reader) {
  const std::optional<std::string_view> name = reader.object();
  if (name != className) {
    if (name) reader.skip();
    return nullptr;
  }
  const std::optional<PropertyList> content = reader.propertyList(maximumValuesInRecord);
  if (!content || !content->dictionary()) return nullptr;
  return DonationValue::initWithPropertyListRepresentation(*content->dictionary());
}

void DonationWire::encode(WireEncoder& encoder, const DonationValues& values) {
  encoder.list(values.size());
  for (const DonationValuePtr& value : values) encodeValue(encoder, *value);
}

DecodedList DonationWire::decode(WireReader& reader) {
  const std::optional<std::size_t> count = reader.list();
  if (!count) {
    return DecodedList::right(
        makeServiceError(ServiceErrorCode::invalidArguments, "no list of donations"));
  }
  DonationValues values;
  for (std::size_t i = 0; i < *count; ++i) {
    DonationValuePtr value = decodeValue(reader);
    if (!value) {
      return DecodedList::right(
          makeServiceError(ServiceErrorCode::invalidArguments,
                           "element " + std::to_string(i) + " is no valid donation"));
    }
    if (!value->propertyListText()) {
      return DecodedList::right(
          makeDonationError(DonationErrorCode::notSerializable,
                            "element " + std::to_string(i) + " cannot be serialised"));
    }
    values.push_back(std::move(value));
  }
  return DecodedList::left(std::move(values));
}

}  // namespace quenlet
