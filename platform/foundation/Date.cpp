#include "quenlet/Date.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>

namespace quenlet {
namespace {

constexpr double earliestSeconds = -62135596800.0;  // 0001-01-01 00:00:00
constexpr double latestSeconds = 253402300799.0;    // 9999-12-31 23:59:59

// Takes exactly `digits` decimal digits off the front of `text`.
std::optional<int> takeNumber(std::string_view& text, std::size_t digits) {
  if (text.size() < digits) return std::nullopt;
  int number = 0;
  for (const char c : text.substr(0, digits)) {
    if (c < '0' || c > '9') return std::nullopt;
    number = number * 10 + (c - '0');
  }
  text.remove_prefix(digits);
  return number;
}

bool takeExpected(std::string_view& text, char expected) {
  if (text.empty() || text.front() != expected) return false;
  text.remove_prefix(1);
  return true;
}

// Takes ".125" and the like; zero without a fraction, nothing for one without digits.
std::optional<double> takeFraction(std::string_view& text) {
  if (!takeExpected(text, '.')) return 0.0;
  double fraction = 0;
  double weight = 0.1;
  std::size_t digits = 0;
  while (digits < text.size() && text[digits] >= '0' && text[digits] <= '9') {
    fraction += (text[digits++] - '0') * weight;
    weight /= 10;
  }
  if (digits == 0) return std::nullopt;
  text.remove_prefix(digits);
  return fraction;
}

// Puts `number` into `text` as exactly `digits` decimal digits.
void putNumber(std::string& text, std::size_t position, std::size_t digits, long long number) {
  for (; digits > 0; number /= 10) text[position + --digits] = static_cast<char>('0' + number % 10);
}

}  // namespace

Date Date::now() {
  const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
  return Date(std::chrono::duration<double>(sinceEpoch).count());
}

std::optional<Date> Date::fromISO8601(std::string_view text) {
  constexpr std::array<std::size_t, 6> digits = {4, 2, 2, 2, 2, 2};
  constexpr std::array<char, 6> separators = {'-', '-', 'T', ':', ':', '\0'};
  std::array<int, 6> parts{};
  for (std::size_t i = 0; i < parts.size(); ++i) {
    const std::optional<int> number = takeNumber(text, digits[i]);
    if (!number) return std::nullopt;
    parts[i] = *number;
    if (separators[i] != '\0' && !takeExpected(text, separators[i])) return std::nullopt;
  }
  const std::optional<double> fraction = takeFraction(text);
  if (!fraction || text != "Z") return std::nullopt;
  using std::chrono::year_month_day;
  const year_month_day day{std::chrono::year(parts[0]), std::chrono::month(parts[1]),
                           std::chrono::day(parts[2])};
  if (!day.ok() || parts[0] < 1 || parts[3] > 23 || parts[4] > 59 || parts[5] > 59)
    return std::nullopt;
  const auto days = std::chrono::sys_days(day).time_since_epoch().count();
  return Date(days * 86400.0 + parts[3] * 3600.0 + parts[4] * 60.0 + parts[5] + *fraction);
}

std::string Date::iso8601() const {
  const double finite = std::isnan(seconds) ? earliestSeconds : seconds;
  // Clamped before the cast below, which is undefined for doubles beyond the integer range.
  const double whole = std::floor(std::clamp(finite, earliestSeconds, latestSeconds));
  const std::chrono::sys_seconds instant{std::chrono::seconds(static_cast<long long>(whole))};
  const auto day = std::chrono::floor<std::chrono::days>(instant);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss time(instant - day);
  std::string text = "0000-00-00T00:00:00Z";
  putNumber(text, 0, 4, static_cast<int>(date.year()));
  putNumber(text, 5, 2, static_cast<unsigned>(date.month()));
  putNumber(text, 8, 2, static_cast<unsigned>(date.day()));
  putNumber(text, 11, 2, time.hours().count());
  putNumber(text, 14, 2, time.minutes().count());
  putNumber(text, 17, 2, time.seconds().count());
  return text;
}

}  // namespace quenlet
