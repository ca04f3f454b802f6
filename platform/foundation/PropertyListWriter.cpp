#include "platform/foundation/PropertyListWriter.h"
#include "platform/foundation/Base64.h"
#include "platform/foundation/NumberText.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "platform/foundation/XMLText.h"

#include <cmath>
#include <type_traits>
#include <utility>
#include <variant>

namespace quenlet {
void PropertyListWriter::fail(PropertyListErrorCode code, const char* sentence) {
  if (!error) error = makePropertyListError(code, sentence);
}

void PropertyListWriter::open(std::string_view tag) {
  if (error) return;
  if (++depth > PropertyListSerializer::maximumNesting) {
    fail(PropertyListErrorCode::nestingTooDeep, "containers are nested too deeply");
    return;
  }
  output += tag;
}

void PropertyListWriter::close(std::string_view tag) {
  if (error) return;
  --depth;
  output += tag;
}

void PropertyListWriter::element(std::string_view openingTag, std::string_view text,
                                 std::string_view closingTag) {
  if (error) return;
  output += openingTag;
  if (!appendEscapedXML(output, text)) {
    fail(PropertyListErrorCode::invalidText, "a text is not UTF-8 or has a forbidden character");
  }
  output += closingTag;
}

void PropertyListWriter::beginDocument() {
  output += "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
}

void PropertyListWriter::endDocument() { output += "</plist>\n"; }

void PropertyListWriter::beginDictionary() { open("<dict>\n"); }

void PropertyListWriter::endDictionary() { close("</dict>\n"); }

void PropertyListWriter::beginArray() { open("<array>\n"); }

void PropertyListWriter::endArray() { close("</array>\n"); }

void PropertyListWriter::key(std::string_view name) { element("<key>", name, "</key>"); }

void PropertyListWriter::string(std::string_view text) { element("<string>", text, "</string>\n"); }

void PropertyListWriter::boolean(bool value) { output += value ? "<true/>\n" : "<false/>\n"; }

void PropertyListWriter::integer(std::int64_t value) {
  output += "<integer>";
  appendNumber(output, value);
  output += "</integer>\n";
}

void PropertyListWriter::real(double value) {
  if (!std::isfinite(value)) {
    fail(PropertyListErrorCode::nonFiniteNumber, "a real is not finite");
    return;
  }
  output += "<real>";
  appendNumber(output, value);
  output += "</real>\n";
}

void PropertyListWriter::data(std::string_view bytes) {
  output += "<data>";
  appendBase64(output, bytes);
  output += "</data>\n";
}

void PropertyListWriter::date(Date value) {
  if (!std::isfinite(value.secondsSince1970())) {
    fail(PropertyListErrorCode::nonFiniteNumber, "a date is not finite");
    return;
  }
  output += "<date>";
  output += value.iso8601();
  output += "</date>\n";
}

void PropertyListWriter::value(const PropertyList& object) {
  if (error) return;
  const auto write = [this](const auto& held) {
    using Held = std::decay_t<decltype(held)>;
    if constexpr (std::is_same_v<Held, bool>) {
      boolean(held);
    } else if constexpr (std::is_same_v<Held, std::int64_t>) {
      integer(held);
    } else if constexpr (std::is_same_v<Held, double>) {
      real(held);
    } else if constexpr (std::is_same_v<Held, std::string>) {
      string(held);
    } else if constexpr (std::is_same_v<Held, Data>) {
      data(held.bytes);
    } else if constexpr (std::is_same_v<Held, Date>) {
      date(held);
    } else if constexpr (std::is_same_v<Held, PropertyListArray>) {
      beginArray();
      for (const PropertyList& entry : held) value(entry);
      endArray();
    } else {
      beginDictionary();
      for (const auto& [name, entry] : held) {
        key(name);
        value(entry);
      }
      endDictionary();
    }
  };
  std::visit(write, object.value());
}

Result<std::string> PropertyListWriter::takeText() && {
  if (output.size() > PropertyListSerializer::maximumSizeInBytes) {
    fail(PropertyListErrorCode::tooLarge, "the property list is larger than what can be read");
  }
  if (error) return Result<std::string>::failure(error);
  return Result<std::string>::success(std::move(output));
}

}  // namespace quenlet
