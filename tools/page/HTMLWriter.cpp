#include "tools/page/HTMLWriter.h"

#include <algorithm>
#include <array>

#include "platform/foundation/Base64.h"
#include "tools/presentation/TerminalText.h"

namespace quenlet {
namespace {

// Whether a line break behind the element would show as a blank.
bool isWithinLines(std::string_view name) {
  constexpr std::array names = {"a", "b", "bdi", "code", "span", "strong", "time"};
  return std::find(names.begin(), names.end(), name) != names.end();
}

}  // namespace

HTMLWriter::Element HTMLWriter::open(HTMLElementName name, Attributes attributes) {
  begin(name, attributes);
  return {*this, name.text()};
}

void HTMLWriter::element(HTMLElementName name, Attributes attributes, std::string_view text) {
  begin(name, attributes);
  escaped(text);
  close(name.text());
}

void HTMLWriter::emptyElement(HTMLElementName name, Attributes attributes) {
  begin(name, attributes);
  output += '\n';
}

void HTMLWriter::text(std::string_view text) { escaped(text); }

void HTMLWriter::image(const ImageType& type, std::string_view bytes,
                       std::string_view description) {
  output += "<img src=\"data:";
  output += type.mediaType;
  output += ";base64,";
  appendBase64(output, bytes);
  output += "\" alt=\"";
  escaped(description);
  output += "\">";
}

HTMLWriter::Element HTMLWriter::openLinkTo(HTMLName identifier) {
  output += "<a href=\"#";
  output += identifier.text();
  output += "\">";
  return {*this, "a"};
}

void HTMLWriter::styleSheet(HTMLLiteral styleSheet) {
  output += "<style>";
  output += styleSheet.text();
  output += "</style>\n";
}

void HTMLWriter::begin(HTMLElementName name, Attributes attributes) {
  output += '<';
  output += name.text();
  for (const Attribute& attribute : attributes) {
    output += ' ';
    output += attribute.name.text();
    output += "=\"";
    escaped(attribute.value);
    output += '"';
  }
  output += '>';
}

void HTMLWriter::close(std::string_view name) {
  output += "</";
  output += name;
  output += '>';
  if (!isWithinLines(name)) output += '\n';
}

void HTMLWriter::escaped(std::string_view text) {
  for (const char character : printable(text)) {
    switch (character) {
      case '&':
        output += "&amp;";
        break;
      case '<':
        output += "&lt;";
        break;
      case '>':
        output += "&gt;";
        break;
      case '"':
        output += "&quot;";
        break;
      case '\'':
        output += "&#39;";
        break;
      default:
        output += character;
    }
  }
}

}  // namespace quenlet
