#include "audio/precise_wait.h"

// After windows.h, which declares what it needs.
#include <timeapi.h>

#include <thread>
#include <utility>

namespace brisolte {
namespace {

constexpr UINT kTickMilliseconds = 1;

/// Waits with a timer, which counts in units of 100 ns and takes a negative number as from now.
bool WaitWith(HANDLE timer, std::chrono::milliseconds time) {
  constexpr LONGLONG kUnitsPerMillisecond = 10'000;
  LARGE_INTEGER due{};
  due.QuadPart = -time.count() * kUnitsPerMillisecond;
  return SetWaitableTimer(timer, &due, 0, nullptr, nullptr, FALSE) != FALSE &&
         WaitForSingleObject(timer, INFINITE) == WAIT_OBJECT_0;
}

}  // namespace

Handle MakeHighResolutionTimer() {
  return Handle(CreateWaitableTimerExW(nullptr, nullptr, CREATE_WAITABLE_TIMER_HIGH_RESOLUTION,
                                       SYNCHRONIZE | TIMER_MODIFY_STATE));
}

PreciseWait::PreciseWait(Handle timer)
    : timer_(std::move(timer)),
      finerTicks_(timer_ == nullptr && timeBeginPeriod(kTickMilliseconds) == TIMERR_NOERROR) {}

PreciseWait::~PreciseWait() {
  if (finerTicks_) {
    timeEndPeriod(kTickMilliseconds);
  }
}

void PreciseWait::For(std::chrono::milliseconds time) const {
  if (timer_ == nullptr || !WaitWith(timer_.get(), time)) {
    std::this_thread::sleep_for(time);
  }
}

}  // namespace brisolte
