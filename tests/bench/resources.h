#pragma once

#include <cstdint>

namespace brisolte::bench {

/// Seconds of CPU time that all threads of this process have used.
double CpuSeconds();

/// Seconds on a steady clock.
double WallSeconds();

/// The most memory this process has had in use, in MiB.
double PeakMiB();

/// Memory that this process has in use now, in MiB.
double ResidentMiB();

/// How often the calling thread has allocated with `new`. FFmpeg's own allocations are not counted.
std::uint64_t Allocations();

}  // namespace brisolte::bench
