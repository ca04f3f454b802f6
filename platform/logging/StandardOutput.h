#pragma once

#include <string_view>

namespace quenlet {

// Writes one line to standard output, in order with those on standard error. In an agent it does
// not wait for the reader (see StandardStreams).
void printLine(std::string_view line);

}  // namespace quenlet
