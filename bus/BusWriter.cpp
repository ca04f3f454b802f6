#include <cerrno>
#include <string_view>

#include "bus/BusArguments.h"
#include "platform/foundation/Text.h"

namespace quenlet {
namespace {

// The length of the complete type that a valid signature begins with.
std::size_t lengthOfType(std::string_view signature) {
  std::size_t length = 0;
  std::size_t open = 0;
  while (length < signature.size()) {
    const char letter = signature[length++];
    if (letter == '(' || letter == '{') ++open;
    if (letter == ')' || letter == '}') --open;
    if (open == 0 && letter != SD_BUS_TYPE_ARRAY) break;
  }
  return length;
}

// Writes one message. Results are the library's: negative errno for a failure.
class BusWriter final {
 public:
  explicit BusWriter(sd_bus_message* written) : message(written) {}

  int appendAll(std::string_view signature, const BusValues& values) {
    for (const BusValue& value : values) {
      if (signature.empty()) return -EINVAL;
      const std::size_t length = lengthOfType(signature);
      const int result = append(std::string(signature.substr(0, length)), value);
      if (result < 0) return result;
      signature.remove_prefix(length);
    }
    return signature.empty() ? 0 : -EINVAL;
  }

 private:
  int append(const std::string& type, const BusValue& value);
  int appendBasic(const std::string& type, const BusValue& value);
  int appendText(char type, const std::string& text);
  int appendArray(const std::string& element, const BusValue& value);
  int appendDictionary(const std::string& entry, const BusDictionary& dictionary);
  template <typename Append>
  int appendContainer(char type, const std::string& contents, const Append& appendContents) {
    int result = sd_bus_message_open_container(message, type, contents.c_str());
    if (result >= 0) result = appendContents();
    if (result >= 0) result = sd_bus_message_close_container(message);
    return result;
  }

  sd_bus_message* const message;
};

int BusWriter::append(const std::string& type, const BusValue& value) {
  if (type == "v") {
    const std::string held = value.signature();
    return appendContainer(SD_BUS_TYPE_VARIANT, held, [&] { return append(held, value); });
  }
  if (type.starts_with('a')) return appendArray(type.substr(1), value);
  if (type.starts_with('(')) {
    if (value.members() == nullptr) return -EINVAL;
    const std::string contents = type.substr(1, type.size() - 2);
    return appendContainer(SD_BUS_TYPE_STRUCT, contents,
                           [&] { return appendAll(contents, *value.members()); });
  }
  return value.signature() == type ? appendBasic(type, value) : -EINVAL;
}

int BusWriter::appendBasic(const std::string& type, const BusValue& value) {
  if (value.text() != nullptr) return appendText(type.front(), *value.text());
  if (value.objectPath() != nullptr) return appendText(type.front(), *value.objectPath());
  if (value.boolean() != nullptr) {
    const int flag = *value.boolean() ? 1 : 0;
    return sd_bus_message_append_basic(message, SD_BUS_TYPE_BOOLEAN, &flag);
  }
  return std::visit(
      [&](const auto& held) {
        if constexpr (std::is_arithmetic_v<std::decay_t<decltype(held)>>) {
          return sd_bus_message_append_basic(message, type.front(), &held);
        } else {
          return -EINVAL;
        }
      },
      value.value());
}

int BusWriter::appendText(char type, const std::string& text) {
  // Nothing else looks: the bus would end the connection for it.
  if (text.find('\0') != std::string::npos || !isValidUTF8(text)) return -EINVAL;
  return sd_bus_message_append_basic(message, type, text.c_str());
}

int BusWriter::appendArray(const std::string& element, const BusValue& value) {
  if (const std::string* bytes = value.bytes()) {
    if (element != "y") return -EINVAL;
    return sd_bus_message_append_array(message, SD_BUS_TYPE_BYTE, bytes->data(), bytes->size());
  }
  if (const BusDictionary* dictionary = value.dictionary()) {
    return element.starts_with("{s") ? appendDictionary(element, *dictionary) : -EINVAL;
  }
  if (value.elements() == nullptr) return -EINVAL;
  return appendContainer(SD_BUS_TYPE_ARRAY, element, [&] {
    int result = 0;
    for (const BusValue& held : *value.elements()) {
      if (result >= 0) result = append(element, held);
    }
    return result;
  });
}

int BusWriter::appendDictionary(const std::string& entry, const BusDictionary& dictionary) {
  const std::string contents = entry.substr(1, entry.size() - 2);
  const std::string held = contents.substr(1);
  return appendContainer(SD_BUS_TYPE_ARRAY, entry, [&] {
    int result = 0;
    for (const auto& entryOf : dictionary) {
      if (result < 0) break;
      result = appendContainer(SD_BUS_TYPE_DICT_ENTRY, contents, [&] {
        const int written = appendText(SD_BUS_TYPE_STRING, entryOf.first);
        return written < 0 ? written : append(held, entryOf.second);
      });
    }
    return result;
  });
}

}  // namespace

ErrorPtr appendArguments(sd_bus_message* message, const std::string& signature,
                         const BusValues& arguments) {
  const int result = BusWriter(message).appendAll(signature, arguments);
  return result < 0 ? makePosixError(-result, "write a message") : nullptr;
}

}  // namespace quenlet
