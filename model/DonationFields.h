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

// A donated value with all its texts of its own.
struct DecodedDonation final {
  Value::Cases content;
  DonationOrigin origin;
};

// The fields of one record as they stand in its property-list text, references and all. Views into
// that text; a field that is absent has no data. A value type.
struct DonationFields final {
  static constexpr std::size_t maximumContentFields = 8;

  DonationKind kind = DonationKind::name;
  // Name components and fields of postal addresses in ascending order of their keys; for the other
  // kinds just one.
  std::array<std::string_view, maximumContentFields> content;
  std::string_view label;
  std::string_view bundleIdentifier;
  std::string_view donationIdentifier;
  std::string_view clusterIdentifier;
  PostalAddressStyle style = PostalAddressStyle::mailingAddress;
  Date donationDate;
  Date expirationDate;

  // Whether a record may be made of them: the identifiers are not empty, a phone number is one and
  // image data is base64.
  [[nodiscard]] bool areValid() const;
  [[nodiscard]] bool hasIdentifiers() const {
    return !bundleIdentifier.empty() && !donationIdentifier.empty();
  }

  // Need valid fields, but for the identifiers.
  [[nodiscard]] PersonNameComponents nameComponents() const;
  [[nodiscard]] PostalAddress postalAddress() const;
  [[nodiscard]] DonationOrigin origin() const;
  [[nodiscard]] DecodedDonation decoded() const;
};

// Reads records in the very form in which the agent writes them, straight from their text and
// without a tree: no blanks but the line feeds behind each value, keys in ascending order, dates as
// reals, no key that a record does not have. For any other form the caller has to ask the general
// reader, which gives the same for this one. Does not own the text. One thread at a time.
class DonationTextReader final {
 public:
  explicit DonationTextReader(std::string_view text) : rest(text) {}

  // The record at the front of the text, which is taken off; nothing for any deviation.
  [[nodiscard]] std::optional<DonationFields> takeRecord();
  // What has not been taken.
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

// A field without its references.
[[nodiscard]] std::string unescapedField(std::string_view field);

}  // namespace quenlet
