#pragma once

#include <cstddef>
#include <pugixml.hpp>
#include <string>
#include <string_view>

#include "platform/foundation/PropertyList.h"
#include "platform/foundation/PropertyListError.h"
#include "quenlet/Result.h"

namespace quenlet {

// Reads one property list from XML text of unknown origin. Trusts nothing: each element must be one
// that the format knows, with exactly the content that it may have. One thread at a time.
class PropertyListReader final {
 public:
  explicit PropertyListReader(std::string_view document) : text(document) {}

  // The object, or the first error found (PropertyListErrorDomain), which never quotes the content.
  [[nodiscard]] Result<PropertyList> read();

 private:
  using Outcome = Result<PropertyList>;

  [[nodiscard]] ErrorPtr parse();
  [[nodiscard]] ErrorPtr checkProlog() const;
  [[nodiscard]] ErrorPtr checkDeclaration(pugi::xml_node declaration) const;
  [[nodiscard]] ErrorPtr checkRoot(pugi::xml_node root) const;

  // Each reads one element; `nesting` counts the containers around it.
  [[nodiscard]] Outcome readObject(pugi::xml_node element, int nesting) const;
  [[nodiscard]] Outcome readDictionary(pugi::xml_node element, int nesting) const;
  [[nodiscard]] Outcome readArray(pugi::xml_node element, int nesting) const;
  [[nodiscard]] Outcome readScalar(pugi::xml_node element) const;

  // The text of an element without child elements.
  [[nodiscard]] Result<std::string> readText(pugi::xml_node element) const;
  [[nodiscard]] ErrorPtr appendText(std::string& output, pugi::xml_node node) const;
  // The element at `node` or after it. Null at the end; an error for text other than
  // blanks on the way.
  [[nodiscard]] Result<pugi::xml_node> elementFrom(pugi::xml_node node) const;
  [[nodiscard]] Result<pugi::xml_node> firstElement(pugi::xml_node container) const;
  [[nodiscard]] Result<pugi::xml_node> nextElement(pugi::xml_node element) const {
    return elementFrom(element.next_sibling());
  }

  [[nodiscard]] ErrorPtr error(PropertyListErrorCode code, const char* sentence,
                               pugi::xml_node place) const;

  std::string_view text;
  pugi::xml_document document;
};

}  // namespace quenlet
