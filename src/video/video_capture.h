#pragma once

#include <cstdint>
#include <memory>

#include "capture/capture_settings.h"
#include "capture/recording_options.h"
#include "desktop/desktop.h"
#include "encoder/capture_source.h"
#include "encoder/encoder.h"
#include "video/capture_geometry.h"
#include "video/capture_platform.h"
#include "video/frame_delivery.h"

namespace brisolte {

/// Turns the capture target of the settings into frames paced to the frame rate and hands them to the
/// encoder, on the threads of the capture service: `FrameDelivery` says who may call when.
///
/// One object serves one recording: it cannot start again once stopped.
class VideoCapture final : public CaptureSource {
 public:
  /// Runs all steps of construction; the first that fails is logged and leaves the object not initialized.
  /// The desktop is borrowed until the object goes.
  /// Failures that no step answers for are raised as HResultError.
  VideoCapture(CaptureSettings settings, Encoder& encoder, Desktop& desktop,
               std::shared_ptr<const PausableClock> clock, std::unique_ptr<CapturePlatform> platform,
               RecordingOptions options = {});
  VideoCapture(const VideoCapture&) = delete;
  VideoCapture& operator=(const VideoCapture&) = delete;
  ~VideoCapture() override;

  bool initialized() const override { return initialized_; }

  /// False when it already runs. Raises HResultError.
  bool Start() override;
  void Pause() override;
  void Resume() override;
  /// Raises HResultError when the service refuses to end the session; it is let go of all the same.
  void Stop() override;
  void DetachEncoder() override;

 private:
  bool RunConstructionSteps(Encoder& encoder);
  bool InitializeCaptureConfig() const;
  bool InitializeD3D11();
  bool CreateAnyDevice();
  bool HasVideoProcessing(std::int32_t result, const char* failure);
  bool InitializeWGCDevice();
  bool CreateCaptureItem();
  bool CreateFramePool();
  bool CreateSession();
  bool CreateConversion();
  bool CreateVideoProcessor();
  bool ConfigureVideoStream(Encoder& encoder);
  void SettleKeptFrame();
  void LeaveOutMarks();
  void EndDelivery();

  bool initialized_ = false;
  bool running_ = false;
  const CaptureSettings settings_;
  const RecordingOptions options_;
  Desktop& desktop_;
  const std::unique_ptr<CapturePlatform> platform_;
  CaptureGeometry geometry_;
  bool convertsOnCpu_ = false;
  const std::shared_ptr<FrameDelivery> delivery_;
};

}  // namespace brisolte
