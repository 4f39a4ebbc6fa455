#include "capture/windows_recording_parts.h"

#include <utility>

#include "audio/audio_capture.h"
#include "audio/audio_devices.h"
#include "capture/screenshot.h"
#include "common/logger.h"
#include "encoder/ffmpeg/ffmpeg_encoder.h"
#include "encoder/mf/mf_encoder.h"
#include "video/create_video_capture.h"
#include "video/graphics_device.h"

namespace brisolte {
namespace {

class WindowsRecordingParts final : public RecordingParts {
 public:
  bool CreateGraphicsDevice() override {
    D3D_FEATURE_LEVEL featureLevel{};
    return SUCCEEDED(brisolte::CreateGraphicsDevice(DriverType::kHardware, direct3d_, featureLevel));
  }
  void ReleaseGraphicsDevice() override {
    direct3d_.context = nullptr;
    direct3d_.device = nullptr;
  }

  std::unique_ptr<Encoder> CreateFFmpegEncoder(const CaptureSettings& settings,
                                               const RecordingOptions& options,
                                               const RecordingClock& clock) override {
    return std::make_unique<FFmpegEncoder>(settings, [clock] { return clock->Now(); }, options);
  }

  std::unique_ptr<Encoder> CreateMFEncoder(const CaptureSettings& settings,
                                           const RecordingClock& clock) override {
    // One without its writer could not begin a file, and has said why.
    auto encoder =
        std::make_unique<MFEncoder>(settings, SystemMFPlatform(), [clock] { return clock->Now(); });
    return encoder->initialized() ? std::move(encoder) : nullptr;
  }

  std::unique_ptr<CaptureSource> CreateVideoCapture(const CaptureSettings& settings,
                                                    const RecordingOptions& options, Encoder& encoder,
                                                    const RecordingClock& clock) override {
    return brisolte::CreateVideoCapture(settings, encoder, *desktop_, clock, options);
  }

  std::unique_ptr<CaptureSource> CreateAudioCapture(const CaptureSettings& settings, Encoder& encoder,
                                                    const std::shared_ptr<SoundControls>& controls) override {
    return brisolte::CreateAudioCapture(settings, encoder, controls);
  }

  Desktop& desktop() override { return *desktop_; }

  std::vector<AudioDeviceInfo> ListMicrophones() override {
    return EnumerateAudioDevices(AudioDataFlow::kCapture);
  }
  std::vector<AudioDeviceInfo> ListSpeakers() override {
    return EnumerateAudioDevices(AudioDataFlow::kRender);
  }

  bool CaptureScreenshot(const CaptureSettings& settings, const std::string& filePath) override {
    // A driver that was exchanged or has crashed took its devices with it, for good.
    if (direct3d_.device == nullptr || direct3d_.device->GetDeviceRemovedReason() != S_OK) {
      if (!CreateGraphicsDevice()) {
        Logger::Error("Failed to initialize Direct3D11 device");
        return false;
      }
    }
    return TakeScreenshot(settings, *desktop_, direct3d_, filePath);
  }

 private:
  Direct3D direct3d_;
  const std::unique_ptr<Desktop> desktop_ = CreateWindowsDesktop();
};

}  // namespace

std::unique_ptr<RecordingParts> CreateWindowsRecordingParts() {
  return std::make_unique<WindowsRecordingParts>();
}

}  // namespace brisolte
