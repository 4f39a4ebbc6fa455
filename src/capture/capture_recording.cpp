// The recording of a controller, from start to stop.

#include <exception>
#include <mutex>
#include <string>

#include "capture/capture_controller.h"
#include "capture/output_path.h"
#include "common/logger.h"

namespace brisolte {
namespace {

bool IsUsable(const std::unique_ptr<CaptureSource>& capture) {
  return capture != nullptr && capture->initialized();
}

void Detach(CaptureSource* capture) noexcept {
  if (capture == nullptr) {
    return;
  }
  try {
    capture->DetachEncoder();
  } catch (const std::exception& error) {
    Logger::Error(std::string("Failed to detach a capture from its encoder: ") + error.what());
  } catch (...) {
    Logger::Error("Failed to detach a capture from its encoder");
  }
}

}  // namespace

bool CaptureController::startRecord() {
  const std::lock_guard guard(lock_);
  if (isCapturing()) {
    Logger::Error("Recording is already in progress");
    return false;
  }
  return BuildRecording() && StartRecording();
}

bool CaptureController::BuildRecording() {
  const std::string path = MakeOutputFilePath(settings_);
  if (path.empty()) {
    Logger::Error("Failed to generate output file path");
    return false;
  }
  settings_.outputFilePath = path;
  Logger::Info("Output file path: " + path);
  // A capture that a failed attempt left running feeds the encoder that is about to go.
  DetachCaptures();
  clock_ = std::make_shared<PausableClock>();
  if (!encoders_.CreateEncoder(*parts_, settings_, options_, clock_)) {
    Logger::Error("Failed to initialize encoder");
    return false;
  }
  return BuildCaptures();
}

bool CaptureController::BuildCaptures() {
  videoCapture_.reset();
  audioCapture_.reset();
  if (settings_.mode != CaptureMode::kNone) {
    videoCapture_ = parts_->CreateVideoCapture(settings_, options_, *encoders_.active(), clock_);
    if (!IsUsable(videoCapture_)) {
      Logger::Error("Failed to create video capture");
      return false;
    }
  }
  if (!settings_.microphoneDeviceId.empty() || !settings_.speakerDeviceId.empty()) {
    audioCapture_ = parts_->CreateAudioCapture(settings_, *encoders_.active(), sounds_);
    if (!IsUsable(audioCapture_)) {
      // The text is that of the video capture; readers of the log know it as it stands.
      Logger::Error("Failed to create video capture");
      return false;
    }
  }
  return true;
}

bool CaptureController::StartRecording() {
  // stopRecord wants the lock that startRecord holds, so a stage that will not start surfaces as the lock's
  // system error, and what was built stays for the next attempt to replace.
  const auto rollBack = [this](const char* text) {
    Logger::Error(text);
    stopRecord();
    return false;
  };
  if (!encoders_.active()->Start()) {
    return rollBack("Failed to start encoder");
  }
  if (videoCapture_ != nullptr && !videoCapture_->Start()) {
    return rollBack("Failed to start video capture");
  }
  if (audioCapture_ != nullptr && !audioCapture_->Start()) {
    return rollBack("Failed to start audio capture");
  }
  capturing_.store(true, std::memory_order_relaxed);
  return true;
}

bool CaptureController::pauseRecord() {
  const std::lock_guard guard(lock_);
  if (!isCapturing() || clock_->paused()) {
    return false;
  }
  // Sound last, which would leave a hole while a picture is waited for.
  for (CaptureSource* const capture : {videoCapture_.get(), audioCapture_.get()}) {
    if (capture != nullptr) {
      capture->Pause();
    }
  }
  return clock_->Pause();
}

bool CaptureController::resumeRecord() {
  const std::lock_guard guard(lock_);
  // First, so that what is delivered from now on finds the time that it belongs to.
  if (!isCapturing() || !clock_->Resume()) {
    return false;
  }
  for (CaptureSource* const capture : {audioCapture_.get(), videoCapture_.get()}) {
    if (capture != nullptr) {
      capture->Resume();
    }
  }
  return true;
}

bool CaptureController::stopRecord() {
  const std::lock_guard guard(lock_);
  if (!isCapturing()) {
    return false;
  }
  try {
    StopStages();
  } catch (const std::exception& error) {
    // One text for all three stages.
    Logger::Error(std::string("Error during audio cleanup: ") + error.what());
  } catch (...) {
    Logger::Error("Error during audio cleanup: unknown exception");
  }
  videoCapture_.reset();
  audioCapture_.reset();
  capturing_.store(false, std::memory_order_relaxed);
  encoders_.Clear();
  return true;
}

void CaptureController::StopStages() {
  if (videoCapture_ != nullptr) {
    videoCapture_->Stop();
  }
  if (audioCapture_ != nullptr) {
    audioCapture_->Stop();
  }
  if (encoders_.active() != nullptr) {
    encoders_.active()->Stop();
  }
}

void CaptureController::DetachCaptures() noexcept {
  Detach(videoCapture_.get());
  Detach(audioCapture_.get());
}

}  // namespace brisolte
