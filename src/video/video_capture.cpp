#include "video/video_capture.h"

#include <chrono>
#include <exception>
#include <string>
#include <utility>

#include "common/hresult_error.h"
#include "common/logger.h"

namespace brisolte {
namespace {

constexpr std::int64_t kTicksPerMillisecond = 10'000;
constexpr auto kUnspecifiedFailure = static_cast<std::int32_t>(0x80004005);

/// The milliseconds since a frame's capture. Its time and the steady clock both come from the system's
/// performance counter, by what the platform documents of the one and its C++ libraries do for the other; an
/// answer that no frame's delivery takes says that they do not, and counts as unknown.
std::int64_t DelaySince(std::int64_t capturedMs) {
  constexpr std::int64_t kLongestDelay = 10'000;
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  const std::int64_t delay = std::chrono::duration_cast<std::chrono::milliseconds>(now).count() - capturedMs;
  return delay >= 0 && delay <= kLongestDelay ? delay : 0;
}

}  // namespace

VideoCapture::VideoCapture(CaptureSettings settings, Encoder& encoder, Desktop& desktop,
                           std::unique_ptr<CapturePlatform> platform)
    : settings_(std::move(settings)),
      desktop_(desktop),
      platform_(std::move(platform)),
      encoder_(&encoder),
      pacer_(settings_.frameRate),
      keeper_(*this) {
  initialized_ = RunConstructionSteps();
}

VideoCapture::~VideoCapture() {
  try {
    Stop();
  } catch (const std::exception& error) {
    Logger::Error(std::string("Exception in ~VideoCapture: ") + error.what());
  }
}

bool VideoCapture::Start() {
  if (running_.load(std::memory_order_relaxed)) {
    Logger::Error("Capture session is already running");
    return false;
  }
  Logger::Info("+++++++ Starting videoCapture +++++++");
  keeper_.gate()->Through([](VideoCapture& self) {
    self.pacer_.Reset();
    self.framesProcessed_ = 0;
    self.triggerCount_.store(0, std::memory_order_relaxed);
    self.running_.store(true, std::memory_order_relaxed);
  });
  platform_->StartCapture();
  return true;
}

void VideoCapture::Stop() {
  if (!running_.load(std::memory_order_relaxed)) {
    Logger::Info("Capture session is not running");
    return;
  }
  std::uint32_t framesProcessed = 0;
  keeper_.gate()->Through([&](VideoCapture& self) {
    self.running_.store(false, std::memory_order_relaxed);
    framesProcessed = self.framesProcessed_;
  });
  // Outside the gate: the service may wait here for a call that waits at the gate.
  platform_->CloseSession();
  platform_->ReleaseItem();
  platform_->ReleaseWrappedDevice();
  Logger::Info("Video Capture stopped,trigger count " +
               std::to_string(triggerCount_.load(std::memory_order_relaxed)) +
               " , total frames processed: " + std::to_string(framesProcessed));
}

void VideoCapture::DetachEncoder() {
  keeper_.gate()->Through([](VideoCapture& self) { self.encoder_ = nullptr; });
}

std::int32_t VideoCapture::HandleFrameArrived() {
  try {
    OnFrameArrived();
    return 0;
  } catch (const HResultError& error) {
    Logger::Error(std::string("Exception in OnFrameArrived: ") + error.what());
    return error.hresult();
  } catch (const std::exception& error) {
    Logger::Error(std::string("Exception in OnFrameArrived: ") + error.what());
  } catch (...) {
    Logger::Error("Unknown exception in OnFrameArrived");
  }
  return kUnspecifiedFailure;
}

void VideoCapture::OnFrameArrived() {
  triggerCount_.fetch_add(1, std::memory_order_relaxed);
  if (!running_.load(std::memory_order_relaxed) || encoder_ == nullptr) {
    return;
  }
  const auto captured = platform_->TryGetNextFrame();
  if (captured == nullptr) {
    Logger::Warning("No frame available");
    return;
  }
  const std::int64_t nowMs = captured->SystemRelativeTime() / kTicksPerMillisecond;
  const Arrival arrival = pacer_.Arrive(nowMs);
  if (arrival.isFirst) {
    Logger::Info("First Video frame arrived at: " + std::to_string(nowMs));
  }
  if (arrival.accepted) {
    Deliver(*captured, *arrival.accepted, nowMs);
  }
}

void VideoCapture::Deliver(CapturedFrame& captured, const FrameTiming& timing, std::int64_t capturedMs) {
  VideoFrame frame;
  const bool converted = captured.SurfaceFromFrame(frame, timing);
  captured.Close();
  if (converted) {
    frame.delay = DelaySince(capturedMs);
    encoder_->ProcessFrameAsync(frame);
    ++framesProcessed_;
  }
}

}  // namespace brisolte
