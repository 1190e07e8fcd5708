// SPDX-License-Identifier: GPL-3.0-or-later
// Replaces the global operator new of the benchmark program with one that counts, then allocates as
// usual. The simulated radio's thread allocates too, hence the atomic.
#include "AllocationCounter.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {
std::atomic<std::uint64_t> allocations{0};
}  // namespace

std::uint64_t tarn::test::AllocationCount() {
  return allocations.load(std::memory_order_relaxed);
}

void* operator new(std::size_t size) {
  allocations.fetch_add(1, std::memory_order_relaxed);
  if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
  throw std::bad_alloc();
}

void operator delete(void* p) noexcept {
  std::free(p);
}

void operator delete(void* p, std::size_t) noexcept {
  std::free(p);
}
