#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "capture/capture_settings.h"
#include "desktop/desktop.h"
#include "encoder/capture_source.h"
#include "encoder/encoder.h"
#include "video/capture_geometry.h"
#include "video/capture_platform.h"
#include "video/frame_gate.h"
#include "video/frame_pacer.h"

namespace brisolte {

/// Turns the capture target of the settings into frames paced to the frame rate and hands them to the
/// encoder, on the threads of the capture service, one frame at a time.
///
/// One object serves one recording: it cannot start again once stopped.
class VideoCapture final : public CaptureSource {
 public:
  /// Runs all steps of construction; the first that fails is logged and leaves the object not initialized.
  /// The desktop is borrowed until the object goes.
  /// Failures that no step answers for are raised as HResultError.
  VideoCapture(CaptureSettings settings, Encoder& encoder, Desktop& desktop,
               std::unique_ptr<CapturePlatform> platform);
  VideoCapture(const VideoCapture&) = delete;
  VideoCapture& operator=(const VideoCapture&) = delete;
  ~VideoCapture() override;

  bool initialized() const override { return initialized_; }

  /// False when it already runs. Raises HResultError.
  bool Start() override;
  /// Raises HResultError when the service does not end the session; it is let go of all the same.
  void Stop() override;
  void DetachEncoder() override;

 private:
  using Gate = FrameGate<VideoCapture>;

  /// Closes the gate also when construction ends in an exception, before anything behind it goes.
  class GateKeeper {
   public:
    explicit GateKeeper(VideoCapture& capture) : gate_(std::make_shared<Gate>(capture)) {}
    GateKeeper(const GateKeeper&) = delete;
    GateKeeper& operator=(const GateKeeper&) = delete;
    ~GateKeeper() { gate_->Close(); }

    const std::shared_ptr<Gate>& gate() const { return gate_; }

   private:
    std::shared_ptr<Gate> gate_;
  };

  bool InitializeCaptureConfig();
  bool InitializeD3D11();
  bool CreateAnyDevice();
  bool InitializeWGCDevice();
  bool CreateCaptureItem();
  bool CreateFramePool();
  bool CreateSession();
  bool CreateConversion();
  bool ConfigureVideoStream();
  bool RunConstructionSteps();

  std::int32_t HandleFrameArrived();
  void OnFrameArrived();
  void Deliver(CapturedFrame& captured, const FrameTiming& timing, std::int64_t capturedMs);

  bool initialized_ = false;
  const CaptureSettings settings_;
  Desktop& desktop_;
  const std::unique_ptr<CapturePlatform> platform_;
  CaptureGeometry geometry_;
  std::atomic<bool> running_{false};
  std::atomic<std::uint64_t> triggerCount_{0};

  // What the handler works with; touched inside the gate only.
  Encoder* encoder_;
  FramePacer pacer_;
  std::uint32_t framesProcessed_ = 0;

  const GateKeeper keeper_;
};

}  // namespace brisolte
