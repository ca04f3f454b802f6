#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "model/DonationOrigin.h"
#include "model/Value.h"
#include "platform/contacts/PhoneNumber.h"

namespace quenlet {

// The five kinds of content, in the order of Value's cases.
enum class DonationKind : std::uint8_t {
  name,
  emailAddress,
  phoneNumber,
  postalAddress,
  imageData,
};

// A donated value that owns its texts.
struct DecodedDonation final {
  Value::Cases content;
  DonationOrigin origin;
};

// The fields of one record as its property-list text spells them, with entity references. Views
// into that text; an absent field has no data. A value type.
struct DonationFields final {
  static constexpr std::size_t maximumContentFields = 8;

  DonationKind kind = DonationKind::name;
  // Names and postal addresses have several fields, in ascending order of their keys; the other
  // kinds have one.
  std::array<std::string_view, maximumContentFields> content;
  std::string_view label;
  std::string_view bundleIdentifier;
  std::string_view donationIdentifier;
  std::string_view clusterIdentifier;
  PostalAddressStyle style = PostalAddressStyle::mailingAddress;
  Date donationDate;
  Date expirationDate;

  // Whether they make a valid record: the identifiers are not empty, a phone number is one, and
  // image data is base64.
  [[nodiscard]] bool areValid() const;
  [[nodiscard]] bool hasIdentifiers() const {
    return !bundleIdentifier.empty() && !donationIdentifier.empty();
  }

  // Require valid fields; only the identifiers may be empty.
  [[nodiscard]] PersonNameComponents nameComponents() const;
  [[nodiscard]] PostalAddress postalAddress() const;
  [[nodiscard]] DonationOrigin origin() const;
  [[nodiscard]] DecodedDonation decoded() const;
};

// Reads records in exactly the form that the agent writes, straight from their text: no blanks
// except a line feed after each value, keys in ascending order, dates as reals, no unknown key. Any
// other form is left to the general reader, which gives the same result for this one. Does not own
// the text. One thread at a time.
class DonationTextReader final {
 public:
  explicit DonationTextReader(std::string_view text) : rest(text) {}

  // Takes the record off the front of the text; nothing for any deviation.
  [[nodiscard]] std::optional<DonationFields> takeRecord();
  // The text that is left.
  [[nodiscard]] std::string_view remainder() const { return rest; }

 private:
  using Keys = std::array<std::string_view, DonationFields::maximumContentFields>;

  bool take(std::string_view expected);
  bool takeText(std::string_view& text);
  bool takeReal(Date& date);
  bool takeInteger(PostalAddressStyle& style);
  bool takeLabelAndOrigin(DonationFields& fields);
  bool takeOrigin(DonationFields& fields);
  bool takeContent(DonationFields& fields);
  bool takeDictionary(const Keys& ascendingKeys, DonationFields& fields);

  std::string_view rest;
};

// The text of a field, with its references resolved.
[[nodiscard]] std::string unescapedField(std::string_view field);

}  // namespace quenlet
