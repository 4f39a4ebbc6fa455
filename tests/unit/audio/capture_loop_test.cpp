#include "audio/capture_loop.h"

#include <gmock/gmock.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;

class ScriptedStream : public PolledStream {
 public:
  explicit ScriptedStream(std::function<bool()> poll) : poll_(std::move(poll)) {}
  bool Poll(const std::atomic<bool>& /*running*/) override { return poll_(); }

 private:
  std::function<bool()> poll_;
};

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
  RunCaptureLoop(running, microphone, speaker);
  EXPECT_THAT(polls, ElementsAre("microphone", "speaker", "microphone", "speaker"));
}

TEST(CaptureLoop, DoesNothingWhenItMustNotRun) {
  const std::atomic<bool> running = false;
  ScriptedStream stream([]() -> bool { throw std::logic_error("polled"); });
  RunCaptureLoop(running, stream, stream);
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
  RunCaptureLoop(running, microphone, speaker);
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
  const std::jthread loop([&] { RunCaptureLoop(running, stream, stream); });
  polled.wait(false);
  running = false;
}

}  // namespace
}  // namespace brisolte
