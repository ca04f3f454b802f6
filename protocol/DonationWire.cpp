#include "protocol/DonationWire.h"

#include "model/DonationBounds.h"
#include "model/DonationError.h"
#include "platform/ipc/ServiceInterface.h"

namespace quenlet {
namespace {

// Records that donors make have about twenty.
constexpr std::size_t maximumValuesInRecord = 1000;

using DecodedList = Result<DonationValues>;
using DecodedRecord = Result<DonationValuePtr>;

DecodedRecord notSerializable(const std::string& reason) {
  return DecodedRecord::failure(makeDonationError(DonationErrorCode::notSerializable, reason));
}

// The content of the next value if it is an object of our class; nothing otherwise.
std::optional<PropertyList> takeRecord(WireReader& reader) {
  const std::optional<std::string_view> name = reader.object();
  if (name == DonationWire::className) return reader.propertyList(maximumValuesInRecord);
  if (name) reader.skip();
  return std::nullopt;
}

// Checks the bounds first: everything else costs more the larger the record is.
DecodedRecord decodeDonatedValue(WireReader& reader) {
  const std::optional<PropertyList> content = takeRecord(reader);
  const PropertyListDictionary* entries = content ? content->dictionary() : nullptr;
  if (entries == nullptr) return DecodedRecord::success(nullptr);
  if (const auto violation = DonationBounds::violation(*entries)) {
    return notSerializable("cannot be serialised: " + *violation);
  }
  DonationValuePtr value = DonationValue::initWithPropertyListRepresentation(*entries);
  if (value && !value->propertyListText()) return notSerializable("cannot be serialised");
  return DecodedRecord::success(std::move(value));
}

// Reads a list, each element with `decodeElement`. Fails at the first error or null element.
template <typename DecodeElement>
DecodedList decodeList(WireReader& reader, const DecodeElement& decodeElement) {
  const std::optional<std::size_t> count = reader.list();
  if (!count) {
    return DecodedList::failure(
        makeServiceError(ServiceErrorCode::invalidArguments, "no list of donations"));
  }
  DonationValues values;
  for (std::size_t i = 0; i < *count; ++i) {
    DecodedRecord element = decodeElement(reader);
    const std::string name = "element " + std::to_string(i);
    if (!element.ok()) {
      return DecodedList::failure(makeError(element.error()->domain(), element.error()->code(),
                                            name + " " + element.error()->debugDescription()));
    }
    if (!element.value()) {
      return DecodedList::failure(
          makeServiceError(ServiceErrorCode::invalidArguments, name + " is not a valid donation"));
    }
    values.push_back(std::move(element).takeValue());
  }
  return DecodedList::success(std::move(values));
}

}  // namespace

void DonationWire::encodeValue(WireEncoder& encoder, const DonationValue& value) {
  encoder.object(className).propertyList(value.propertyListRepresentation());
}

DonationValuePtr DonationWire::decodeValue(WireReader& reader) {
  const std::optional<PropertyList> content = takeRecord(reader);
  if (!content || !content->dictionary()) return nullptr;
  return DonationValue::initWithPropertyListRepresentation(*content->dictionary());
}

void DonationWire::encode(WireEncoder& encoder, const DonationValues& values) {
  encoder.list(values.size());
  for (const DonationValuePtr& value : values) encodeValue(encoder, *value);
}

DecodedList DonationWire::decode(WireReader& reader) {
  return decodeList(reader, [](WireReader& element) {
    return DecodedRecord::success(DonationWire::decodeValue(element));
  });
}

DecodedList DonationWire::decodeDonated(WireReader& reader) {
  return decodeList(reader, decodeDonatedValue);
}

}  // namespace quenlet
