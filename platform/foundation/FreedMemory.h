#pragma once

#include <malloc.h>

namespace quenlet {

// Returns freed memory to the system, which the C library would keep for later. Call it at the end
// of work that needed far more memory than it leaves in use. Thread-safe.
inline void returnFreedMemory() {
#ifdef __GLIBC__
  ::malloc_trim(0);
#endif
}

// Has the C library return the memory of large allocations as soon as they are freed. It would
// otherwise keep as much as the largest one so far, for good. Call it before there are threads.
inline void returnLargeAllocationsAtOnce() {
#ifdef __GLIBC__
  constexpr int largeInBytes = 1 << 20;
  ::mallopt(M_MMAP_THRESHOLD, largeInBytes);
  ::mallopt(M_TRIM_THRESHOLD, largeInBytes);
#endif
}

}  // namespace quenlet
