// Counts what `new` hands out. Included by one source of an executable, whose operators it replaces.
#pragma once

#include <cstdlib>
#include <new>

namespace {
long allocations = 0;
}

[[gnu::noinline]] void* operator new(std::size_t size) {
  ++allocations;
  if (void* storage = std::malloc(size == 0 ? 1 : size)) return storage;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* storage) noexcept {
  std::free(storage);
}
[[gnu::noinline]] void operator delete(void* storage, std::size_t) noexcept {
  std::free(storage);
}
