#include "failing_memory.h"

#include <cstdlib>
#include <new>

namespace brisolte::testing {
namespace {

constexpr int kNever = -1;

/// How many allocations of this thread succeed before the one that fails.
thread_local int left = kNever;

}  // namespace

FailingMemory::FailingMemory(int after) {
  left = after;
}

FailingMemory::~FailingMemory() {
  left = kNever;
}

}  // namespace brisolte::testing

// In place of the ones of the whole program.

void* operator new(std::size_t size) {
  using brisolte::testing::left;
  const bool fails = left == 0;
  if (left >= 0) {
    --left;
  }
  void* const memory = fails ? nullptr : std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  return memory;
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
