#pragma once

// What the module with the telephone library exports. The module is loaded when it is first needed,
// so that programs neither link the library nor pay for its tables.
extern "C" {

// 1 when the library takes two numbers, given as ASCII digits with or without a leading '+', for
// the same one; 0 when it does not, or takes one of them for no number. Thread-safe.
using QuenletNumberMatch = int(const char* first, const char* second);
QuenletNumberMatch quenletNumberMatch;
}

namespace quenlet {

inline constexpr char numberMatchSymbol[] = "quenletNumberMatch";

}  // namespace quenlet
