#include "foreign/LineScanner.h"

#include <algorithm>
#include <cerrno>
#include <charconv>

namespace quenlet {

bool LineScanner::next() {
  if (rest.empty()) return false;
  const std::size_t end = std::min(rest.find('\n'), rest.size());
  current = rest.substr(0, end);
  if (current.ends_with('\r')) current.remove_suffix(1);
  rest.remove_prefix(std::min(rest.size(), end + 1));
  ++number;
  return true;
}

ErrorPtr LineScanner::fault(const std::string& what) const {
  return makeError(PosixErrorDomain, EINVAL, "line " + std::to_string(number) + " " + what);
}

std::optional<std::uint32_t> hexadecimalNumber(std::string_view text, std::size_t digits) {
  std::uint32_t number = 0;
  if (text.size() != digits) return std::nullopt;
  const auto [end, failure] = std::from_chars(text.begin(), text.end(), number, 16);
  return failure == std::errc() && end == text.end() ? std::optional(number) : std::nullopt;
}

}  // namespace quenlet
