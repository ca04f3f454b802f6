#pragma once

#include <cstdint>

// What the module with the telephone library exports. The module is loaded when it is first needed,
// so that programs neither link the library nor pay for its tables.
extern "C" {

// A number with its country, taken apart. Leading zeros of the texts are left out.
struct QuenletInternationalNumber final {
  std::int32_t countryCode;
  std::uint64_t nationalNumber;
  // The digits that reach it from within its country; 0 when they are too many.
  std::uint64_t dialledAtHome;
};

// Reads '+' and ASCII digits; 1 when the library takes that for a number of some country, else 0.
// Thread-safe.
using QuenletReadNumber = int(const char* text, QuenletInternationalNumber* number);
QuenletReadNumber quenletReadNumber;
}

namespace quenlet {

inline constexpr char readNumberSymbol[] = "quenletReadNumber";

}  // namespace quenlet
