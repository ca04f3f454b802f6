#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

#include "quenlet/Export.h"

namespace quenlet {

// An absolute instant, in seconds since 1970-01-01 00:00:00 UTC, fractions included. A value type.
class QUENLET_API Date final {
 public:
  constexpr Date() = default;
  explicit constexpr Date(double secondsSince1970) : seconds(secondsSince1970) {}

  // The instant of the call, by the system's real-time clock.
  [[nodiscard]] static Date now();
  // The latest representable date, 4001-01-01 00:00:00 UTC: "never".
  [[nodiscard]] static constexpr Date distantFuture() { return Date(64092211200.0); }
  // Reads "2026-05-01T12:00:00Z", with or without a fraction of a second; nothing for any other
  // text, or a date that does not exist. Years 0001 to 9999.
  [[nodiscard]] static std::optional<Date> fromISO8601(std::string_view text);

  [[nodiscard]] constexpr double secondsSince1970() const { return seconds; }
  // Seconds from `earlier` to this date; negative when this date is the earlier one.
  [[nodiscard]] constexpr double timeIntervalSince(Date earlier) const {
    return seconds - earlier.seconds;
  }
  [[nodiscard]] constexpr Date addingSeconds(double interval) const {
    return Date(seconds + interval);
  }
  // "2026-05-01T12:00:00Z"; the fraction of a second is dropped. Dates outside the years 0001 to
  // 9999 are clamped to them; NaN becomes the earliest.
  [[nodiscard]] std::string iso8601() const;

  friend constexpr bool operator==(Date, Date) = default;
  friend constexpr auto operator<=>(Date, Date) = default;

 private:
  double seconds = 0;
};

}  // namespace quenlet
