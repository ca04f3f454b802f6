#pragma once

#include <cstdint>

// The interface of the module with the telephone library. The module is loaded when first needed,
// so programs need not link the library or pay for its tables.
extern "C" {

// An international number, split. Leading zeros are dropped.
struct QuenletInternationalNumber final {
  std::int32_t countryCode;
  std::uint64_t nationalNumber;
  // The digits dialled for it within its country; 0 when they do not fit.
  std::uint64_t dialledAtHome;
};

// Reads '+' and ASCII digits; 1 when the library accepts them as a number of some country, else 0.
// Thread-safe.
using QuenletReadNumber = int(const char* text, QuenletInternationalNumber* number);
__attribute__((visibility("default"))) QuenletReadNumber quenletReadNumber;
}

namespace quenlet {

inline constexpr char readNumberSymbol[] = "quenletReadNumber";

}  // namespace quenlet
