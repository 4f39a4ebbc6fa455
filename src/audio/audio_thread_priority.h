#pragma once

#include <windows.h>
// After windows.h, which declares what it needs.
#include <avrt.h>

namespace brisolte {

/// While it lives, the thread that made it runs as the system's own audio threads do. An endpoint keeps only
/// some ten milliseconds, and software encoders keep every processor busy; without it sound would get lost.
/// Where the system refuses, the thread keeps the priority it has.
class AudioThreadPriority {
 public:
  AudioThreadPriority() : task_(AvSetMmThreadCharacteristicsW(L"Audio", &taskIndex_)) {}
  AudioThreadPriority(const AudioThreadPriority&) = delete;
  AudioThreadPriority& operator=(const AudioThreadPriority&) = delete;
  ~AudioThreadPriority() {
    if (task_ != nullptr) {
      AvRevertMmThreadCharacteristics(task_);
    }
  }

 private:
  DWORD taskIndex_ = 0;
  HANDLE task_;
};

}  // namespace brisolte
