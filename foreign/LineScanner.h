#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "quenlet/Error.h"

namespace quenlet {

// Takes a text apart into its lines, which LF or CR LF ends. One thread.
class LineScanner final {
 public:
  explicit LineScanner(std::string_view text) : rest(text) {}

  // Goes to the next line; false behind the last one.
  bool next();
  [[nodiscard]] std::string_view line() const { return current; }
  // "line 7 has no ...", with the number of the current line.
  [[nodiscard]] ErrorPtr fault(const std::string& what) const;

 private:
  std::string_view rest;
  std::string_view current;
  std::size_t number = 0;
};

// The number that exactly `digits` hexadecimal digits write.
[[nodiscard]] std::optional<std::uint32_t> hexadecimalNumber(std::string_view text,
                                                             std::size_t digits);

}  // namespace quenlet
