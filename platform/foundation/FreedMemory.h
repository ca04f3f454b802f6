#pragma once

namespace quenlet {

// Gives memory that was freed back to the system, which the C library otherwise keeps for later:
// for the end of work that needed much more than what it leaves. Thread-safe.
void returnFreedMemory();

}  // namespace quenlet
