// The C++ allocation functions of the DLL: every block is wiped before it is freed. Decrypted texts pass through
// strings and vectors, whose growth and moves leave copies that no owner could wipe.

#include <windows.h>

#include <malloc.h>

#include <cstdlib>
#include <new>

#include "win/gate.h"

void* operator new(std::size_t size) {
  if (win::Passes(win::Call::kMemory)) {
    if (void* const block = std::malloc(size != 0 ? size : 1)) return block;
  }
  throw std::bad_alloc();
}

void operator delete(void* block) noexcept {
  if (block != nullptr) SecureZeroMemory(block, _msize(block));
  std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
