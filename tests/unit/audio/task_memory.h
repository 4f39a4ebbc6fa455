#pragma once

#include <cstddef>

namespace brisolte::testing {

/// COM task memory for the code under test, which is watched until that frees it.
void* AllocateWatched(std::size_t bytes);

/// How many watched allocations were not freed yet.
std::size_t WatchedAllocations();

}  // namespace brisolte::testing
