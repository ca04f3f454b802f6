#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

#include "tools/page/HTMLNames.h"
#include "tools/presentation/ImageType.h"

namespace quenlet {

// A fixed text of the program.
class HTMLLiteral final {
 public:
  consteval HTMLLiteral(const char* text) : content(text) {}
  [[nodiscard]] constexpr std::string_view text() const { return content; }

 private:
  std::string_view content;
};

// Writes one HTML document, front to back, into memory. The page shows the text that it is given
// and nothing else: every text and attribute value is escaped, characters that could reorder or
// break the page become U+FFFD, and the names of elements and attributes are constants of the
// program that cannot run a script or load from elsewhere. One thread.
class HTMLWriter final {
 public:
  struct Attribute final {
    HTMLAttributeName name;
    std::string_view value;
  };
  using Attributes = std::initializer_list<Attribute>;

  // An element that ends where this object's life ends.
  class Element final {
   public:
    ~Element() { writer.close(name); }
    Element(const Element&) = delete;
    Element& operator=(const Element&) = delete;

   private:
    friend class HTMLWriter;
    Element(HTMLWriter& html, std::string_view elementName) : writer(html), name(elementName) {}
    HTMLWriter& writer;
    std::string_view name;
  };

  HTMLWriter() { output = "<!doctype html>\n"; }

  [[nodiscard]] Element open(HTMLElementName name, Attributes attributes = {});
  // A whole element around a text.
  void element(HTMLElementName name, Attributes attributes, std::string_view text);
  void element(HTMLElementName name, std::string_view text) { element(name, {}, text); }
  // An element that has no end, such as "meta".
  void emptyElement(HTMLElementName name, Attributes attributes);
  void text(std::string_view text);

  // The image itself, which must be of `type`.
  void image(const ImageType& type, std::string_view bytes, std::string_view description);
  // A link to the element of this page that has the given identifier.
  [[nodiscard]] Element openLinkTo(HTMLName identifier);
  // The contents are written as they are.
  void styleSheet(HTMLLiteral styleSheet);

  [[nodiscard]] std::string take() && { return std::move(output); }

 private:
  void begin(HTMLElementName name, Attributes attributes);
  void close(std::string_view name);
  void escaped(std::string_view text);

  std::string output;
};

}  // namespace quenlet
