#pragma once

#include <cstdio>
#include <exception>

#include "platform/scheduling/Scheduler.h"

namespace quenlet {

// Runs a block that was given to a scheduler or a loop. An exception, such as from a lack of
// memory, ends that block alone: it is reported on standard error, and the scheduler goes on. The
// block is destroyed with everything it holds; that is how a client whose request it held learns
// that no answer will come.
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
