#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "model/DonationOrigin.h"
#include "model/Value.h"

namespace quenlet {

// A donated value that owns its texts.
struct DecodedDonation final {
  Value::Cases content;
  DonationOrigin origin;
};

// The property-list text of one record, as the donations file holds it: no blanks except a line
// feed after each value, keys in ascending order, dates as reals. Stateless.
//
//   <dict>
//   <key>emailAddress</key><string>bo@example.org</string>
//   <key>label</key><string>home</string>
//   <key>origin</key><dict>
//   <key>bundleIdentifier</key><string>com.example.mail</string>
//   …
class DonationText final {
 public:
  DonationText() = delete;

  static constexpr std::string_view beginning = "<dict>";
  static constexpr char imageDataKey[] = "imageData";
  static constexpr char styleKey[] = "style";
  static constexpr char originKey[] = "origin";

  // Nothing when the form cannot hold a text or a date, or the record could not be read back: its
  // bundle or donation identifier is empty.
  [[nodiscard]] static std::optional<std::string> write(const DecodedDonation& donation);
  // Takes one record off the front of `text`. Nothing for any deviation from what write() gives,
  // such as an unknown key, and for an invalid record; `text` is then of no further use. The
  // general reader gives the same result for the same text.
  [[nodiscard]] static std::optional<DecodedDonation> take(std::string_view& text);
};

}  // namespace quenlet
