#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "platform/foundation/PropertyList.h"
#include "platform/foundation/PropertyListError.h"
#include "quenlet/Result.h"

namespace quenlet {

// Builds the XML text of a property list front to back, without a tree: either a document, from
// beginDocument() to endDocument(), or a fragment without the two. The caller opens and closes
// containers in pairs and gives a key before each value of a dictionary. Lines are not indented: a
// fragment is the same text at every depth. One thread at a time.
//
// The first value that the format cannot hold makes the whole text fail; later calls have no
// effect.
class PropertyListWriter final {
 public:
  PropertyListWriter() = default;
  PropertyListWriter(const PropertyListWriter&) = delete;
  PropertyListWriter& operator=(const PropertyListWriter&) = delete;

  void beginDocument();
  void endDocument();
  void beginDictionary();
  void endDictionary();
  void beginArray();
  void endArray();
  void key(std::string_view name);

  void string(std::string_view text);
  void boolean(bool value);
  void integer(std::int64_t value);
  // Written in the shortest form that reads back bit for bit. Must be finite.
  void real(double value);
  void data(std::string_view bytes);
  // Drops the fraction of a second. Must be finite.
  void date(Date value);
  void value(const PropertyList& object);

  // The text written, or the first error. Leaves the writer unusable.
  [[nodiscard]] Result<std::string> takeText() &&;

 private:
  void open(std::string_view tag);
  void close(std::string_view tag);
  void fail(PropertyListErrorCode code, const char* sentence);
  void element(std::string_view openingTag, std::string_view text, std::string_view closingTag);

  std::string output;
  ErrorPtr error;
  int depth = 0;
};

}  // namespace quenlet
