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

// An international number as people write it. All texts are ASCII and end with a 0.
struct QuenletWrittenNumber final {
  std::int32_t countryCode;
  char region[8];          // "GB", or "ZZ" when the number does not tell
  char international[64];  // "+44 20 7946 0958"
  char national[64];       // "020 7946 0958"
};

// As QuenletReadNumber; also 0 for a number whose forms do not fit. Thread-safe.
using QuenletWriteNumber = int(const char* text, QuenletWrittenNumber* number);
__attribute__((visibility("default"))) QuenletWriteNumber quenletWriteNumber;
}

namespace quenlet {

inline constexpr char readNumberSymbol[] = "quenletReadNumber";
inline constexpr char writeNumberSymbol[] = "quenletWriteNumber";

}  // namespace quenlet
