#include "encoder/ffmpeg/audio_timestamps.h"

#include <algorithm>

namespace brisolte {

void AudioTimestamps::Add(std::int64_t time, int samples) {
  if (samples > 0) {
    runs_.push_back({time, samples});
  }
}

std::int64_t AudioTimestamps::Take(int samples) {
  if (!runs_.empty()) {
    last_ = std::max(runs_.front().time, last_ + leastStep_);
  }
  while (samples > 0 && !runs_.empty()) {
    Run& run = runs_.front();
    const int taken = std::min(samples, run.samples);
    run.time += taken;
    run.samples -= taken;
    samples -= taken;
    if (run.samples == 0) {
      runs_.pop_front();
    }
  }
  return last_;
}

}  // namespace brisolte
