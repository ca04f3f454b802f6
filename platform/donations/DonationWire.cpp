#include "platform/donations/DonationWire.h"

#include "platform/donations/DonationError.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "platform/ipc/ServiceInterface.h"

namespace quenlet {
namespace {

// A record of ours has about twenty.
constexpr std::size_t maximumValuesInRecord = 1000;

using DecodedList = Result<DonationValues>;

// One element of the list; null when it is no valid record.
DonationValuePtr decodeRecord(WireReader& reader) {
  const std::optional<std::string_view> className = reader.object();
  if (className != DonationWire::className) {
    if (className) reader.skip();
    return nullptr;
  }
  const std::optional<PropertyList> content = reader.propertyList(maximumValuesInRecord);
  if (!content || !content->dictionary()) return nullptr;
  return DonationValue::initWithPropertyListRepresentation(*content->dictionary());
}

bool isSerializable(const DonationValue& value) {
  return PropertyListSerializer::dataWithObject(value.propertyListRepresentation()).isLeft();
}

}  // namespace

void DonationWire::encode(WireEncoder& encoder, const DonationValues& values) {
  encoder.list(values.size());
  for (const DonationValuePtr& value : values) {
    encoder.object(className).propertyList(value->propertyListRepresentation());
  }
}

DecodedList DonationWire::decode(WireReader& reader) {
  const std::optional<std::size_t> count = reader.list();
  if (!count) {
    return DecodedList::right(
        makeServiceError(ServiceErrorCode::invalidArguments, "no list of donations"));
  }
  DonationValues values;
  for (std::size_t i = 0; i < *count; ++i) {
    DonationValuePtr value = decodeRecord(reader);
    if (!value) {
      return DecodedList::right(
          makeServiceError(ServiceErrorCode::invalidArguments,
                           "element " + std::to_string(i) + " is no valid donation"));
    }
    if (!isSerializable(*value)) {
      return DecodedList::right(
          makeDonationError(DonationErrorCode::notSerializable,
                            "element " + std::to_string(i) + " cannot be serialised"));
    }
    values.push_back(std::move(value));
  }
  return DecodedList::left(std::move(values));
}

}  // namespace quenlet
