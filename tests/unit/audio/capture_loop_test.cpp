#include "audio/capture_loop.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/captured_log.h"

namespace brisolte {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::Pair;

class ScriptedStream : public PolledStream {
 public:
  explicit ScriptedStream(std::function<bool()> poll) : poll_(std::move(poll)) {}
  bool Poll(const std::atomic<bool>& /*running*/) override { return poll_(); }

 private:
  std::function<bool()> poll_;
};

void NoWait(milliseconds /*time*/) {}

/// An endpoint as the system fills it, in simulated time: a packet of 10 ms every 10 ms, and room for 22 ms.
/// What finds no room is lost.
class Endpoint : public PolledStream {
 public:
  explicit Endpoint(const microseconds& now) : now_(now) {}

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
  static constexpr microseconds kNone{0};
  static constexpr microseconds kPacket{10'000};
  static constexpr microseconds kRoom{22'000};

  const microseconds& now_;
  microseconds next_ = kPacket;
  microseconds waiting_ = kNone;
  int lost_ = 0;
};

/// What a minute loses when each wait ends as `end` says, which gets the moment at which it should. Now and
/// then something else takes the thread for some milliseconds: a page fault, a slow console, a virtual
/// machine.
int LostInAMinute(const std::function<microseconds(microseconds)>& end) {
  constexpr int kHiccupInterval = 17;
  constexpr microseconds kHiccup{9'000};
  std::atomic<bool> running = true;
  microseconds now{0};
  int waits = 0;
  Endpoint endpoint(now);
  ScriptedStream other([] { return false; });
  RunCaptureLoop(running, endpoint, other, [&](milliseconds time) {
    now = end(now + time);
    now += ++waits % kHiccupInterval == 0 ? kHiccup : microseconds(0);
    running = now < std::chrono::minutes(1);
  });
  return endpoint.lost();
}

TEST(CaptureLoop, LosesNothingWithWaitsOfAMillisecond) {
  EXPECT_EQ(LostInAMinute([](microseconds moment) { return moment; }), 0);
}

// Why a wait that ends with the clock's tick does not do: the same hiccups cost packets.
TEST(CaptureLoop, WouldLoseSoundWithWaitsThatEndWithTheClocksTick) {
  constexpr auto kNextTick = [](microseconds moment) {
    constexpr microseconds kTick{15'625};
    return (moment / kTick + 1) * kTick;
  };
  EXPECT_GT(LostInAMinute(kNextTick), 50);
}

TEST(CaptureLoop, WaitsAMillisecondWhenNeitherDelivered) {
  std::atomic<bool> running = true;
  int polls = 0;
  ScriptedStream microphone([&] { return ++polls % 2 == 0; });
  ScriptedStream speaker([] { return false; });
  std::vector<std::pair<int, milliseconds>> waits;
  RunCaptureLoop(running, microphone, speaker, [&](milliseconds time) {
    waits.emplace_back(polls, time);
    running = waits.size() < 3;
  });
  EXPECT_THAT(waits,
              ElementsAre(Pair(1, milliseconds(1)), Pair(3, milliseconds(1)), Pair(5, milliseconds(1))));
}

TEST(CaptureLoop, PollsTheMicrophoneAndThenTheSpeakerWhateverEachDelivers) {
  std::atomic<bool> running = true;
  std::vector<std::string> polls;
  ScriptedStream microphone([&] {
    polls.emplace_back("microphone");
    return true;
  });
  ScriptedStream speaker([&] {
    polls.emplace_back("speaker");
    running = polls.size() < 4;
    return false;
  });
  RunCaptureLoop(running, microphone, speaker, NoWait);
  EXPECT_THAT(polls, ElementsAre("microphone", "speaker", "microphone", "speaker"));
}

TEST(CaptureLoop, DoesNothingWhenItMustNotRun) {
  const std::atomic<bool> running = false;
  ScriptedStream stream([]() -> bool { throw std::logic_error("polled"); });
  RunCaptureLoop(running, stream, stream, NoWait);
}

TEST(CaptureLoop, LogsAnExceptionAndGoesOn) {
  const CapturedLog log;
  std::atomic<bool> running = true;
  int polls = 0;
  ScriptedStream microphone([&]() -> bool {
    running = ++polls < 3;
    throw std::runtime_error("no memory");
  });
  ScriptedStream speaker([] { return false; });
  RunCaptureLoop(running, microphone, speaker, NoWait);
  EXPECT_EQ(log.count("[ERROR] Exception in audio thread: no memory"), 3);
}

TEST(CaptureLoop, EndsWhenAnotherThreadClearsTheFlag) {
  std::atomic<bool> running = true;
  std::atomic<bool> polled = false;
  ScriptedStream stream([&] {
    polled = true;
    polled.notify_all();
    return false;
  });
  const std::jthread loop([&] { RunCaptureLoop(running, stream, stream, NoWait); });
  polled.wait(false);
  running = false;
}

}  // namespace
}  // namespace brisolte
