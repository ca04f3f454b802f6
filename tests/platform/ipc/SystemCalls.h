#pragma once

#include <atomic>

namespace quenlet {

// What this program's calls of the system come to: SystemCalls.cpp stands in for the C library's.
struct SystemCalls final {
  // As before Linux 6.16: no socket can refuse descriptors.
  static inline std::atomic<bool> hidePassRights = false;
  // So many calls of accept4() fail with `acceptFailure`.
  static inline std::atomic<int> failingAccepts = 0;
  static inline std::atomic<int> acceptFailure = 0;
  // When not -1, the user behind every peer's socket.
  static inline std::atomic<int> peerUser = -1;
};

}  // namespace quenlet
