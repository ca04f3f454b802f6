#pragma once

#include <string_view>

namespace quenlet {

// Writes one line to standard output and flushes it, so that whoever reads along sees it at once.
// Lines of several threads do not mix.
void printLine(std::string_view line);

}  // namespace quenlet
