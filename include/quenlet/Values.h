#pragma once

#include <cstdint>
#include <optional>
#include <string>

// The kinds of values about the device's owner. All text is UTF-8. All are value types; they
// compare byte by byte.
namespace quenlet {

// A person's name; an absent component is not the same as an empty one.
struct Name final {
  std::optional<std::string> namePrefix = {};
  std::optional<std::string> givenName = {};
  std::optional<std::string> middleName = {};
  std::optional<std::string> familyName = {};
  std::optional<std::string> nameSuffix = {};
  std::optional<std::string> nickname = {};

  friend bool operator==(const Name&, const Name&) = default;
};

// A postal address; a field that does not apply is empty.
struct Address final {
  std::string street = {};  // may hold several lines
  std::string subLocality = {};
  std::string city = {};
  std::string subAdministrativeArea = {};
  std::string state = {};
  std::string postalCode = {};
  std::string country = {};
  std::string isoCountryCode = {};

  friend bool operator==(const Address&, const Address&) = default;
};

// How a postal address is meant to be laid out. The agent keeps it and does not use it.
enum class AddressStyle : std::int64_t { mailing = 0, abbreviated = 1 };

// In the following, a label says what an entry is used for, as in "home" or "work"; may be empty.

struct Email final {
  std::string address = {};
  std::string label = {};

  friend bool operator==(const Email&, const Email&) = default;
};

struct Phone final {
  std::string number = {};  // as people write it: "+49 (30) 123-456"
  std::string label = {};

  friend bool operator==(const Phone&, const Phone&) = default;
};

struct Postal final {
  Address address = {};
  AddressStyle style = AddressStyle::mailing;
  std::string label = {};

  friend bool operator==(const Postal&, const Postal&) = default;
};

struct Image final {
  std::string bytes = {};  // of the image file, in any format

  friend bool operator==(const Image&, const Image&) = default;
};

}  // namespace quenlet
