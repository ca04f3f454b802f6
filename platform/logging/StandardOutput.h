#pragma once

#include <string_view>

namespace quenlet {

// Writes one line to standard output, in its order with those on standard error. An agent does not
// wait for whoever reads along (see StandardStreams).
void printLine(std::string_view line);

}  // namespace quenlet
