# What differs between processors.

# File sizes and inode numbers have 64 bits everywhere.
add_compile_definitions(_FILE_OFFSET_BITS=64)

# Some processors need a library for atomic numbers as wide as those of ours.
include(CheckCXXSourceCompiles)
set(atomicProgram "#include <atomic>
#include <cstdint>
std::atomic<std::uint64_t> wide;
int main() { return static_cast<int>(wide++); }
")
check_cxx_source_compiles("${atomicProgram}" QUENLET_ATOMICS_ARE_BUILT_IN)
if(NOT QUENLET_ATOMICS_ARE_BUILT_IN)
  set(CMAKE_REQUIRED_LIBRARIES atomic)
  check_cxx_source_compiles("${atomicProgram}" QUENLET_ATOMICS_ARE_IN_LIBATOMIC)
  unset(CMAKE_REQUIRED_LIBRARIES)
  if(NOT QUENLET_ATOMICS_ARE_IN_LIBATOMIC)
    message(FATAL_ERROR "64-bit atomic numbers are neither built in nor in libatomic")
  endif()
  set(QUENLET_ATOMIC_LIBRARY atomic)
endif()
