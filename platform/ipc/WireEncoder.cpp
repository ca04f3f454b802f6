#include "platform/ipc/WireEncoder.h"

#include <bit>
#include <cstring>
#include <type_traits>

#include "platform/ipc/WireReader.h"

namespace quenlet {

namespace {

void appendTag(std::string& buffer, WireType type) { buffer.push_back(static_cast<char>(type)); }

void appendFixed(std::string& buffer, WireType type, std::uint64_t number) {
  char bytes[1 + sizeof(number)];
  bytes[0] = static_cast<char>(type);
  for (std::size_t i = 0; i < sizeof(number); ++i) {
    bytes[1 + i] = static_cast<char>(number >> (8 * i) & 0xff);
  }
  buffer.append(bytes, sizeof(bytes));
}

void appendSize(std::string& buffer, std::uint64_t number) {
  while (number >= 0x80) {
    buffer.push_back(static_cast<char>((number & 0x7f) | 0x80));
    number >>= 7;
  }
  buffer.push_back(static_cast<char>(number));
}

void appendText(std::string& buffer, WireType type, std::string_view text) {
  appendTag(buffer, type);
  appendSize(buffer, text.size());
  buffer.append(text);
}

}  // namespace

WireEncoder& WireEncoder::null() {
  appendTag(buffer, WireType::null);
  return *this;
}

WireEncoder& WireEncoder::boolean(bool value) {
  appendTag(buffer, WireType::boolean);
  buffer.push_back(value ? 1 : 0);
  return *this;
}

WireEncoder& WireEncoder::integer(std::int64_t value) {
  appendFixed(buffer, WireType::integer, static_cast<std::uint64_t>(value));
  return *this;
}

WireEncoder& WireEncoder::real(double value) {
  appendFixed(buffer, WireType::real, std::bit_cast<std::uint64_t>(value));
  return *this;
}

WireEncoder& WireEncoder::date(Date value) {
  appendFixed(buffer, WireType::date, std::bit_cast<std::uint64_t>(value.secondsSince1970()));
  return *this;
}

WireEncoder& WireEncoder::string(std::string_view text) {
  appendText(buffer, WireType::string, text);
  return *this;
}

WireEncoder& WireEncoder::data(std::string_view bytes) {
  appendText(buffer, WireType::data, bytes);
  return *this;
}

WireEncoder& WireEncoder::list(std::size_t count) {
  appendTag(buffer, WireType::list);
  appendSize(buffer, count);
  return *this;
}

WireEncoder& WireEncoder::dictionary(std::size_t count) {
  appendTag(buffer, WireType::dictionary);
  appendSize(buffer, count);
  return *this;
}

WireEncoder& WireEncoder::object(std::string_view className) {
  appendText(buffer, WireType::object, className);
  return *this;
}

WireEncoder& WireEncoder::propertyList(const PropertyList& value) {
  std::visit(
      [this](const auto& held) {
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
          list(held.size());
          for (const PropertyList& element : held) propertyList(element);
        } else {
          propertyList(held);
        }
      },
      value.value());
  return *this;
}

WireEncoder& WireEncoder::propertyList(const PropertyListDictionary& entries) {
  dictionary(entries.size());
  for (const auto& [key, entry] : entries) string(key).propertyList(entry);
  return *this;
}

WireEncoder& WireEncoder::encoded(std::string_view bytes) {
  buffer.append(bytes);
  return *this;
}

}  // namespace quenlet
