#include "platform/logging/StandardOutput.h"

#include <cstdio>
#include <string>

namespace quenlet {

void printLine(std::string_view line) {
  // One call of the C library, which locks the stream, so that a line stays in one piece. Nobody
  // can be told of a line that standard output does not take.
  const std::string whole = std::string(line) + "\n";
  std::fwrite(whole.data(), 1, whole.size(), stdout);
  std::fflush(stdout);
}

}  // namespace quenlet
