#pragma once

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>

#include "audio/capture_loop.h"

namespace brisolte::testing {

/// An endpoint as the system fills it, in simulated time: a packet of 10 ms every 10 ms, and room for 22 ms.
/// What finds no room is lost.
class SimulatedEndpoint : public PolledStream {
 public:
  /// Follows `now`, which has to outlive it.
  explicit SimulatedEndpoint(const std::chrono::microseconds& now) : now_(now) {}

  bool Poll(const std::atomic<bool>& /*running*/) override {
    while (next_ <= now_) {
      next_ += kPacket;
      lost_ += waiting_ + kPacket > kRoom ? 1 : 0;
      waiting_ = std::min(waiting_ + kPacket, kRoom);
    }
    const bool delivers = waiting_ > kNone;
    waiting_ = kNone;
    return delivers;
  }

  int lost() const { return lost_; }

 private:
  static constexpr std::chrono::microseconds kNone{0};
  static constexpr std::chrono::microseconds kPacket{10'000};
  static constexpr std::chrono::microseconds kRoom{22'000};

  const std::chrono::microseconds& now_;
  std::chrono::microseconds next_ = kPacket;
  std::chrono::microseconds waiting_ = kNone;
  int lost_ = 0;
};

/// When a wait ends that begins and is to end at these moments.
using WaitEnd =
    std::function<std::chrono::microseconds(std::chrono::microseconds begin, std::chrono::microseconds due)>;

/// One that ends with the clock's tick, as the system's ordinary waits do.
inline std::chrono::microseconds EndWithTick(std::chrono::microseconds /*begin*/,
                                             std::chrono::microseconds due) {
  constexpr std::chrono::microseconds kTick{15'625};
  return (due / kTick + 1) * kTick;
}

/// The packets that an endpoint loses in a minute whose waits end so, while something else takes the thread
/// after each 17th wait for as long as `hiccup`: a page fault, a slow console, a virtual machine.
inline int PacketsLostInAMinute(const WaitEnd& end, std::chrono::microseconds hiccup) {
  /// The stream that does not deliver.
  class Silent : public PolledStream {
   public:
    bool Poll(const std::atomic<bool>& /*running*/) override { return false; }
  };
  constexpr int kHiccupInterval = 17;
  std::atomic<bool> running = true;
  std::chrono::microseconds now{0};
  int waits = 0;
  SimulatedEndpoint endpoint(now);
  Silent silent;
  RunCaptureLoop(running, endpoint, silent, [&](std::chrono::milliseconds time) {
    now = end(now, now + time);
    now += ++waits % kHiccupInterval == 0 ? hiccup : std::chrono::microseconds(0);
    running = now < std::chrono::minutes(1);
  });
  return endpoint.lost();
}

}  // namespace brisolte::testing
