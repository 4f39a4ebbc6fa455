#include "capture/encoder_slots.h"

#include "common/logger.h"

namespace brisolte {

bool EncoderSlots::CreateEncoder(RecordingParts& parts, const CaptureSettings& settings,
                                 const RecordingOptions& options,
                                 const RecordingParts::RecordingClock& clock) {
  const bool useMediaFoundation = settings.useMediaFoundation == 1;
  std::unique_ptr<Encoder>& slot = useMediaFoundation ? mediaFoundation_ : ffmpeg_;
  Clear();
  slot = useMediaFoundation ? parts.CreateMFEncoder(settings, clock)
                            : parts.CreateFFmpegEncoder(settings, options, clock);
  active_ = slot.get();
  if (active_ == nullptr) {
    Logger::Error(useMediaFoundation ? "Failed to create Media Foundation encoder"
                                     : "Failed to create FFmpeg encoder");
    return false;
  }
  return true;
}

void EncoderSlots::Clear() {
  ffmpeg_.reset();
  mediaFoundation_.reset();
  active_ = nullptr;
}

}  // namespace brisolte
