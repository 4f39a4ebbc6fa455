#include "audio/capture_loop.h"

#include <exception>
#include <string>

#include "common/logger.h"

namespace brisolte {
namespace {

bool PollBoth(const std::atomic<bool>& running, PolledStream& microphone, PolledStream& speaker) {
  try {
    const bool microphoneDelivered = microphone.Poll(running);
    const bool speakerDelivered = speaker.Poll(running);
    return microphoneDelivered || speakerDelivered;
  } catch (const std::exception& error) {
    Logger::Error(std::string("Exception in audio thread: ") + error.what());
    return false;
  }
}

}  // namespace

void RunCaptureLoop(const std::atomic<bool>& running, PolledStream& microphone, PolledStream& speaker,
                    const std::function<void(std::chrono::milliseconds)>& wait) {
  while (running) {
    if (!PollBoth(running, microphone, speaker)) {
      wait(std::chrono::milliseconds(1));
    }
  }
}

}  // namespace brisolte
