#pragma once

#include <algorithm>
#include <atomic>

namespace brisolte {

/// How loud a sound is recorded, and how loud it is. Any thread.
class SoundControl {
 public:
  /// 1 leaves it as it is.
  void SetVolume(float volume) { volume_ = volume; }
  void Mute(bool muted) { muted_ = muted; }

  /// What its samples are to be multiplied by.
  float factor() const { return muted_ ? 0 : volume_.load(); }

  /// So loud were the samples of one delivery; 1 is full scale.
  void Heard(float level) {
    float loudest = loudest_;
    while (level > loudest && !loudest_.compare_exchange_weak(loudest, level)) {
    }
  }

  /// The loudest that was heard since the last call.
  float TakeLevel() { return std::min(loudest_.exchange(0), 1.0F); }

 private:
  std::atomic<float> volume_ = 1;
  std::atomic<bool> muted_ = false;
  std::atomic<float> loudest_ = 0;
};

/// Those of the two sounds of a recording.
struct SoundControls {
  SoundControl microphone;
  SoundControl speaker;
};

}  // namespace brisolte
