#include "platform/foundation/PropertyListReader.h"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <optional>
#include <utility>

#include "platform/foundation/Base64.h"
#include "platform/foundation/PropertyListSerializer.h"
#include "platform/foundation/Text.h"
#include "platform/foundation/XMLGuard.h"
#include "platform/foundation/XMLText.h"

// Three passes, each of which trusts only what the one before it has checked:
//
//   bytes ── XMLGuard ──> bounded bytes ── XML library ──> tree ── this class ──> PropertyList
//            UTF-8, nesting,               well-formed             elements, keys, numbers,
//            memory                        markup                  references
//
// References are replaced here and not by the library, which leaves unknown ones in the text
// silently. Comments and processing instructions never reach the tree.

namespace quenlet {

using enum PropertyListErrorCode;

namespace {

constexpr unsigned int parseOptions = pugi::parse_cdata | pugi::parse_eol |
                                      pugi::parse_embed_pcdata | pugi::parse_declaration |
                                      pugi::parse_doctype | pugi::parse_fragment;

// Blanks within a text count. When no text is cut into pieces, a text of blanks is the only child
// of its element; then the blanks between elements, which would be half of all nodes, need not be
// kept.
unsigned int blanksKeptIn(std::string_view text) {
  return XMLGuard::cutsText(text) ? pugi::parse_ws_pcdata : pugi::parse_ws_pcdata_single;
}

// The limit counts containers; the root and a scalar in the innermost container are elements too.
constexpr int maximumElementNesting = PropertyListSerializer::maximumNesting + 2;

bool isBlank(std::string_view content) { return trimmed(content).empty(); }

// std::from_chars accepts a minus but no plus. "+-1" stays as it is, and fails.
std::string_view withoutPlus(std::string_view digits) {
  const bool signs = digits.starts_with("+") && !digits.starts_with("+-");
  return signs ? digits.substr(1) : digits;
}

template <typename Number, typename Format>
std::optional<Number> parsedNumber(std::string_view digits, Format format) {
  Number number{};
  const char* end = digits.data() + digits.size();
  const auto [stop, failure] = std::from_chars(digits.data(), end, number, format);
  if (failure != std::errc() || stop != end) return std::nullopt;
  return number;
}

std::optional<PropertyList> parsedInteger(std::string_view content) {
  const std::string_view digits = withoutPlus(trimmed(content));
  const bool isHexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
  if (isHexadecimal && digits.substr(2).starts_with('-')) return std::nullopt;
  const auto number = isHexadecimal ? parsedNumber<std::int64_t>(digits.substr(2), 16)
                                    : parsedNumber<std::int64_t>(digits, 10);
  if (!number) return std::nullopt;
  return PropertyList(*number);
}

std::optional<PropertyList> parsedReal(std::string_view content) {
  const auto number =
      parsedNumber<double>(withoutPlus(trimmed(content)), std::chars_format::general);
  if (!number || !std::isfinite(*number)) return std::nullopt;
  return PropertyList(*number);
}

std::optional<PropertyList> parsedDate(std::string_view content) {
  constexpr std::size_t sizeWithoutFraction = 20;
  if (content.size() != sizeWithoutFraction) return std::nullopt;
  const std::optional<Date> date = Date::fromISO8601(content);
  if (!date) return std::nullopt;
  return PropertyList(*date);
}

std::optional<PropertyList> parsedData(std::string_view content) {
  std::optional<std::string> bytes = decodedBase64(content);
  if (!bytes) return std::nullopt;
  return PropertyList(Data{std::move(*bytes)});
}

std::optional<PropertyList> parsedBoolean(std::string_view content, bool value) {
  if (!content.empty()) return std::nullopt;
  return PropertyList(value);
}

}  // namespace

Result<PropertyList> PropertyListReader::read() {
  if (ErrorPtr failure = parse()) return Outcome::failure(std::move(failure));
  if (ErrorPtr failure = checkProlog()) return Outcome::failure(std::move(failure));
  const pugi::xml_node root = document.document_element();
  if (ErrorPtr failure = checkRoot(root)) return Outcome::failure(std::move(failure));
  const Result<pugi::xml_node> object = firstElement(root);
  if (!object.ok()) return Outcome::failure(object.error());
  if (!object.value()) {
    return Outcome::failure(error(unexpectedContent, "the root is empty", root));
  }
  const Result<pugi::xml_node> further = nextElement(object.value());
  if (!further.ok()) return Outcome::failure(further.error());
  if (further.value()) {
    return Outcome::failure(error(unexpectedContent, "the root has two objects", further.value()));
  }
  return readObject(object.value(), 0);
}

ErrorPtr PropertyListReader::parse() {
  if (text.size() > PropertyListSerializer::maximumSizeInBytes) {
    return makePropertyListError(tooLarge, "the property list is too large");
  }
  if (ErrorPtr failure = XMLGuard(text, maximumElementNesting).check()) return failure;
  const pugi::xml_parse_result parsed = document.load_buffer(
      text.data(), text.size(), parseOptions | blanksKeptIn(text), pugi::encoding_utf8);
  if (parsed.status == pugi::status_ok) return nullptr;
  const auto code = parsed.status == pugi::status_out_of_memory ? tooLarge : malformedMarkup;
  return makePropertyListError(code, parsed.description(), static_cast<std::size_t>(parsed.offset));
}

// Beside the root, only one declaration, at the very start, and one document type, before the root.
ErrorPtr PropertyListReader::checkProlog() const {
  bool hasDocumentType = false;
  bool hasRoot = false;
  for (const pugi::xml_node node : document.children()) {
    bool fits = false;
    if (node.type() == pugi::node_declaration) {
      if (ErrorPtr failure = checkDeclaration(node)) return failure;
      // The tree does not show blanks before it, which XML forbids.
      fits = node == document.first_child() && !isBlank(text.substr(0, 1));
    } else if (node.type() == pugi::node_doctype) {
      fits = !std::exchange(hasDocumentType, true) && !hasRoot;
    } else if (node.type() == pugi::node_element) {
      fits = !std::exchange(hasRoot, true);
    } else {
      fits = node.type() == pugi::node_pcdata && isBlank(node.value());
    }
    if (!fits) return error(unexpectedContent, "something foreign beside the root", node);
  }
  if (hasRoot) return nullptr;
  return makePropertyListError(malformedMarkup, "there is no root element");
}

ErrorPtr PropertyListReader::checkDeclaration(pugi::xml_node declaration) const {
  const pugi::xml_attribute encoding = declaration.attribute("encoding");
  if (!encoding || lowercased(encoding.value()) == "utf-8") return nullptr;
  return error(unsupportedEncoding, "the declared encoding is not UTF-8", declaration);
}

ErrorPtr PropertyListReader::checkRoot(pugi::xml_node root) const {
  if (std::string_view(root.name()) != "plist") {
    return error(unexpectedContent, "the root is not a property list", root);
  }
  for (const pugi::xml_attribute attribute : root.attributes()) {
    const bool isVersion = std::string_view(attribute.name()) == "version";
    if (!isVersion || std::string_view(attribute.value()) != "1.0") {
      return error(unexpectedContent, "an unknown attribute or version", root);
    }
  }
  return nullptr;
}

Result<PropertyList> PropertyListReader::readObject(pugi::xml_node element, int nesting) const {
  if (element.first_attribute()) {
    return Outcome::failure(error(unexpectedContent, "an attribute", element));
  }
  const std::string_view name = element.name();
  if (name != "dict" && name != "array") return readScalar(element);
  if (nesting == PropertyListSerializer::maximumNesting) {
    return Outcome::failure(error(nestingTooDeep, "containers are nested too deeply", element));
  }
  return name == "dict" ? readDictionary(element, nesting + 1) : readArray(element, nesting + 1);
}

Result<PropertyList> PropertyListReader::readDictionary(pugi::xml_node element, int nesting) const {
  PropertyListDictionary entries;
  Result<pugi::xml_node> key = firstElement(element);
  while (key.ok() && key.value()) {
    const pugi::xml_node keyElement = key.value();
    if (std::string_view(keyElement.name()) != "key" || keyElement.first_attribute()) {
      return Outcome::failure(error(unexpectedContent, "no key where one is due", keyElement));
    }
    Result<std::string> name = readText(keyElement);
    if (!name.ok()) return Outcome::failure(name.error());
    const Result<pugi::xml_node> value = nextElement(keyElement);
    if (!value.ok()) return Outcome::failure(value.error());
    if (!value.value()) {
      return Outcome::failure(error(unexpectedContent, "a key without a value", keyElement));
    }
    Outcome entry = readObject(value.value(), nesting);
    if (!entry.ok()) return entry;
    entries.insert_or_assign(std::move(name).takeValue(), std::move(entry).takeValue());
    key = nextElement(value.value());
  }
  if (!key.ok()) return Outcome::failure(key.error());
  return Outcome::success(std::move(entries));
}

Result<PropertyList> PropertyListReader::readArray(pugi::xml_node element, int nesting) const {
  PropertyListArray array;
  array.reserve(static_cast<std::size_t>(std::distance(element.begin(), element.end())));
  Result<pugi::xml_node> entry = firstElement(element);
  for (; entry.ok() && entry.value(); entry = nextElement(entry.value())) {
    Outcome object = readObject(entry.value(), nesting);
    if (!object.ok()) return object;
    array.push_back(std::move(object).takeValue());
  }
  if (!entry.ok()) return Outcome::failure(entry.error());
  return Outcome::success(std::move(array));
}

Result<PropertyList> PropertyListReader::readScalar(pugi::xml_node element) const {
  Result<std::string> read = readText(element);
  if (!read.ok()) return Outcome::failure(read.error());
  std::string content = std::move(read).takeValue();
  const std::string_view name = element.name();
  if (name == "string") return Outcome::success(std::move(content));
  std::optional<PropertyList> value;
  if (name == "integer") {
    value = parsedInteger(content);
  } else if (name == "real") {
    value = parsedReal(content);
  } else if (name == "date") {
    value = parsedDate(content);
  } else if (name == "data") {
    value = parsedData(content);
  } else if (name == "true" || name == "false") {
    value = parsedBoolean(content, name == "true");
  } else {
    return Outcome::failure(error(unexpectedContent, "an unknown element", element));
  }
  if (!value) return Outcome::failure(error(invalidValue, "an invalid value", element));
  return Outcome::success(std::move(*value));
}

Result<std::string> PropertyListReader::readText(pugi::xml_node element) const {
  std::string content;
  if (ErrorPtr failure = appendText(content, element)) {
    return Result<std::string>::failure(std::move(failure));
  }
  for (const pugi::xml_node node : element.children()) {
    if (node.type() == pugi::node_element) {
      return Result<std::string>::failure(error(unexpectedContent, "an element within text", node));
    }
    if (ErrorPtr failure = appendText(content, node)) {
      return Result<std::string>::failure(std::move(failure));
    }
  }
  return Result<std::string>::success(std::move(content));
}

// `node` is an element, whose first text the library keeps in the element itself, or a further
// piece of text within one.
ErrorPtr PropertyListReader::appendText(std::string& output, pugi::xml_node node) const {
  if (node.type() == pugi::node_cdata) {
    output += node.value();
    return nullptr;
  }
  if (appendUnescapedXML(output, node.value())) return nullptr;
  return error(invalidReference, "a reference to no character", node);
}

Result<pugi::xml_node> PropertyListReader::elementFrom(pugi::xml_node node) const {
  while (node && node.type() != pugi::node_element) {
    if (!isBlank(node.value())) {
      return Result<pugi::xml_node>::failure(
          error(unexpectedContent, "text between elements", node));
    }
    node = node.next_sibling();
  }
  return Result<pugi::xml_node>::success(node);
}

Result<pugi::xml_node> PropertyListReader::firstElement(pugi::xml_node container) const {
  if (!isBlank(container.value())) {
    return Result<pugi::xml_node>::failure(
        error(unexpectedContent, "text between elements", container));
  }
  return elementFrom(container.first_child());
}

ErrorPtr PropertyListReader::error(PropertyListErrorCode code, const char* sentence,
                                   pugi::xml_node place) const {
  const std::ptrdiff_t offset = place.offset_debug();
  if (offset < 0) return makePropertyListError(code, sentence);
  return makePropertyListError(code, sentence, static_cast<std::size_t>(offset));
}

}  // namespace quenlet
