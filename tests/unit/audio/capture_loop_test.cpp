#include "audio/capture_loop.h"

#include <gmock/gmock.h>

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/captured_log.h"
#include "support/simulated_endpoint.h"

namespace brisolte {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using testing::CapturedLog;
using ::testing::ElementsAre;
using testing::PacketsLostInAMinute;
using ::testing::Pair;

class ScriptedStream : public PolledStream {
 public:
  explicit ScriptedStream(std::function<bool()> poll) : poll_(std::move(poll)) {}
  bool Poll(const std::atomic<bool>& /*running*/) override { return poll_(); }

 private:
  std::function<bool()> poll_;
};

constexpr microseconds kHiccup{9'000};

void NoWait(milliseconds /*time*/) {}

// Also while something takes the thread for some milliseconds now and then.
TEST(CaptureLoop, LosesNothingWithWaitsOfAMillisecond) {
  const auto whenDue = [](microseconds /*begin*/, microseconds due) { return due; };
  EXPECT_EQ(PacketsLostInAMinute(whenDue, kHiccup), 0);
}

// Why a wait that ends with the clock's tick does not do: the same hiccups cost packets.
TEST(CaptureLoop, WouldLoseSoundWithWaitsThatEndWithTheClocksTick) {
  EXPECT_GT(PacketsLostInAMinute(testing::EndWithTick, kHiccup), 50);
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
