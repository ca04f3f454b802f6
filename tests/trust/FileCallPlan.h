#pragma once

#include <atomic>

namespace quenlet {

// What becomes of the agent's calls on files below its home. Lies in a file that the test maps, and
// so does the library in preload/, which stands between the agent and the system.
struct FileCallPlan final {
  static constexpr int kills = -1;
  static constexpr int fallsShort = -2;
  std::atomic<int> calls;     // so far
  std::atomic<int> first;     // the number of the call that is struck
  std::atomic<bool> lasting;  // the later ones are, too; of interruptions, every second one
  std::atomic<int> fate;      // 0 for none, an error number, or one of the above
};

}  // namespace quenlet
