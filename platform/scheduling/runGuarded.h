#pragma once

#include <cstdio>
#include <exception>

#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// Runs what somebody else gave a scheduler or a loop. What it throws, as when memory is short, ends
// that block alone: it is said on standard error, what the block held goes, and its scheduler goes
// on. A client whose request the block held so hears that it is not answered.
template <typename Callable, typename... Arguments>
void runGuarded(const Callable& block, const Arguments&... arguments) noexcept {
  try {
    block(arguments...);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "quenlet: a block has failed: %s\n", failure.what());
  } catch (...) {
    std::fputs("quenlet: a block has failed\n", stderr);
  }
}

}  // namespace quenlet
