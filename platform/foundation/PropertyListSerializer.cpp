#include "platform/foundation/PropertyListSerializer.h"

#include <utility>

#include "platform/foundation/PropertyListReader.h"
#include "platform/foundation/PropertyListWriter.h"

namespace quenlet {

Result<std::string> PropertyListSerializer::dataWithObject(const PropertyList& object) {
  PropertyListWriter writer;
  writer.beginDocument();
  writer.value(object);
  writer.endDocument();
  Result<std::string> text = std::move(writer).takeText();
  if (text.isLeft() && text.left().size() > maximumSizeInBytes) {
    return Result<std::string>::right(makePropertyListError(
        PropertyListErrorCode::tooLarge, "the property list is larger than what can be read"));
  }
  return text;
}

Result<PropertyList> PropertyListSerializer::objectWithData(std::string_view data) {
  return PropertyListReader(data).read();
}

}  // namespace quenlet
