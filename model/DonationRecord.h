#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "model/Value.h"
#include "platform/contacts/ValueOrigin.h"

namespace quenlet {

// The bundles under which the agent itself donates.
inline constexpr char AccountsBundleIdentifier[] = "ovaro.quenlet.accounts";
inline constexpr char SIMCardBundleIdentifier[] = "ovaro.quenlet.sim-card";

// The origin of a donation has the type of the origins that entries of the donated card carry.
using DonationOrigin = ValueOrigin;

// A donated value that owns its texts, and the two forms in which it is written as a record. A
// value type.
//
// As a dictionary, on the wire and in edited files: one key for the content, "label" and "style"
// beside it where the kind has them, and "origin". As a text, in the donations file: that
// dictionary with no blanks except a line feed after each value, keys in ascending order, dates as
// reals.
//
//   <dict>
//   <key>emailAddress</key><string>bo@example.org</string>
//   <key>label</key><string>home</string>
//   <key>origin</key><dict>
//   <key>bundleIdentifier</key><string>com.example.mail</string>
//   …
struct DecodedDonation final {
  static constexpr std::string_view beginningOfText = "<dict>";

  Value::Cases content;
  DonationOrigin origin;

  [[nodiscard]] PropertyListDictionary dictionaryRepresentation() const;
  // Nothing when `entries` is not a valid record. Unknown keys are ignored.
  [[nodiscard]] static std::optional<DecodedDonation> donationWithDictionary(
      const PropertyListDictionary& entries);

  // Nothing when the form cannot hold a text or a date, or the record could not be read back: its
  // bundle or donation identifier is empty.
  [[nodiscard]] std::optional<std::string> textRepresentation() const;
  // Takes one record off the front of `texts`. Nothing for any deviation from what
  // textRepresentation() gives, such as an unknown key, and for an invalid record; `texts` is
  // then unusable. The dictionary of the same text gives the same donation.
  [[nodiscard]] static std::optional<DecodedDonation> takeFromTexts(std::string_view& texts);
};

}  // namespace quenlet
