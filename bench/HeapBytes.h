#pragma once

// Counts the heap bytes a program holds and the allocations it makes. Replaces the global allocation
// functions, so a program includes it in exactly one source file, and only a
// program that measures memory: every allocation pays for the count.

#include <malloc.h>

#include <cstddef>
#include <cstdlib>
#include <new>

namespace MrpBench {

// Bytes held by live allocations of operator new, as the allocator sized them.
inline std::size_t liveHeapBytes = 0;
// Calls of operator new since the program started.
inline std::size_t heapAllocations = 0;

}  // namespace MrpBench

// free() in the replaced operator delete does match malloc() in the replaced
// operator new; the compiler, seeing through the inlined replacement, cannot tell.
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"

void* operator new(std::size_t size) {
  void* p = std::malloc(size ? size : 1);
  if (!p) throw std::bad_alloc();
  MrpBench::liveHeapBytes += malloc_usable_size(p);
  ++MrpBench::heapAllocations;
  return p;
}

void operator delete(void* p) noexcept {
  if (!p) return;
  MrpBench::liveHeapBytes -= malloc_usable_size(p);
  std::free(p);
}

void operator delete(void* p, std::size_t) noexcept { operator delete(p); }
