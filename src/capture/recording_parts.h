#pragma once

#include <memory>
#include <string>
#include <vector>

#include "audio/audio_device_info.h"
#include "audio/sound_control.h"
#include "capture/capture_settings.h"
#include "capture/recording_options.h"
#include "common/pausable_clock.h"
#include "desktop/desktop.h"
#include "encoder/capture_source.h"
#include "encoder/encoder.h"

namespace brisolte {

/// Everything of the platform that a controller needs. Called on the controller's thread; what is created
/// belongs to the caller. Null means that nothing could be created; the reason is logged. Exceptions reach
/// the controller's caller.
class RecordingParts {
 public:
  using RecordingClock = std::shared_ptr<const PausableClock>;

  RecordingParts() = default;
  RecordingParts(const RecordingParts&) = delete;
  RecordingParts& operator=(const RecordingParts&) = delete;
  virtual ~RecordingParts() = default;

  /// Makes the graphics device of the controller and keeps it; false when there is none.
  virtual bool CreateGraphicsDevice() = 0;
  virtual void ReleaseGraphicsDevice() = 0;

  /// `clock` is the recording's, in what follows too.
  virtual std::unique_ptr<Encoder> CreateFFmpegEncoder(const CaptureSettings& settings,
                                                       const RecordingOptions& options,
                                                       const RecordingClock& clock) = 0;
  virtual std::unique_ptr<Encoder> CreateMFEncoder(const CaptureSettings& settings,
                                                   const RecordingClock& clock) = 0;

  /// A capture borrows the encoder until it is destroyed or told to let go of it.
  virtual std::unique_ptr<CaptureSource> CreateVideoCapture(const CaptureSettings& settings,
                                                            const RecordingOptions& options, Encoder& encoder,
                                                            const RecordingClock& clock) = 0;
  virtual std::unique_ptr<CaptureSource> CreateAudioCapture(
      const CaptureSettings& settings, Encoder& encoder, const std::shared_ptr<SoundControls>& controls) = 0;

  /// Lives as long as this object.
  virtual Desktop& desktop() = 0;
  virtual std::vector<AudioDeviceInfo> ListMicrophones() = 0;
  virtual std::vector<AudioDeviceInfo> ListSpeakers() = 0;

  /// Writes a PNG of the target that `settings` names to `filePath` (UTF-8).
  virtual bool CaptureScreenshot(const CaptureSettings& settings, const std::string& filePath) = 0;
};

}  // namespace brisolte
