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
  return std::move(writer).takeText();
}

Result<PropertyList> PropertyListSerializer::objectWithData(std::string_view data) {
  return PropertyListReader(data).read();
}

}  // namespace quenlet
