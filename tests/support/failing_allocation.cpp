#include "support/failing_allocation.h"

#include <cstdlib>
#include <new>

int support::g_failingAllocation = 0;

void* operator new(std::size_t size) {
  const bool fails = support::g_failingAllocation > 0 && --support::g_failingAllocation == 0;
  void* const memory = fails ? nullptr : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }

void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
