#pragma once

namespace quenlet {

// Returns freed memory to the system, which the C library would keep for later. Call it at the end
// of work that needed far more memory than it leaves in use. Thread-safe.
void returnFreedMemory();

}  // namespace quenlet
