#include "resources.h"

#include <sys/resource.h>
#include <sys/time.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <new>
#include <string>

namespace {

thread_local std::uint64_t allocations = 0;

double Seconds(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

double StatusMiB(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(field + ":")) {
      return std::stod(line.substr(field.size() + 1)) / 1024;
    }
  }
  return 0;
}

}  // namespace

// Replaces the program's `new`, to count; what `new` itself is made of has no owner.
// NOLINTBEGIN(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)
void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) {
    return memory;
  }
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t /*size*/) noexcept {
  std::free(memory);
}
// NOLINTEND(cppcoreguidelines-no-malloc,cppcoreguidelines-owning-memory)

namespace brisolte::bench {

double CpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
}

double WallSeconds() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double PeakMiB() {
  return StatusMiB("VmHWM");
}

double ResidentMiB() {
  return StatusMiB("VmRSS");
}

std::uint64_t Allocations() {
  return allocations;
}

}  // namespace brisolte::bench
