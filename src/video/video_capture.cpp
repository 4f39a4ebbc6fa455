#include "video/video_capture.h"

#include <exception>
#include <string>
#include <utility>

#include "common/logger.h"
#include "common/text.h"

namespace brisolte {

VideoCapture::VideoCapture(CaptureSettings settings, Encoder& encoder, Desktop& desktop,
                           std::shared_ptr<const PausableClock> clock,
                           std::unique_ptr<CapturePlatform> platform, RecordingOptions options)
    : settings_(std::move(settings)),
      options_(std::move(options)),
      desktop_(desktop),
      platform_(std::move(platform)),
      delivery_(std::make_shared<FrameDelivery>(encoder, settings_.frameRate, std::move(clock))) {
  initialized_ = RunConstructionSteps(encoder);
}

VideoCapture::~VideoCapture() {
  try {
    Stop();
  } catch (const std::exception& error) {
    Logger::Error(std::string("Exception in ~VideoCapture: ") + error.what());
  }
}

bool VideoCapture::Start() {
  if (running_) {
    Logger::Error("Capture session is already running");
    return false;
  }
  Logger::Info("+++++++ Starting videoCapture +++++++");
  delivery_->Start();
  running_ = true;
  LeaveOutMarks();
  platform_->StartCapture();
  return true;
}

void VideoCapture::Pause() {
  delivery_->Pause();
}

void VideoCapture::Resume() {
  delivery_->Resume();
  SettleKeptFrame();
}

void VideoCapture::SettleKeptFrame() {
  platform_->Perform("the frame kept in a pause", [delivery = delivery_] { delivery->DeliverKept(); });
}

void VideoCapture::LeaveOutMarks() {
  const auto check = [this](std::int32_t result, const char* failure, RecordingEvent stays) {
    if (result < 0) {
      Logger::Warning(failure + HResultText(result));
      options_.report(stays);
    }
  };
  if (!options_.showsCursor) {
    check(platform_->LeaveOutCursor(), "The cursor cannot be left out: ", RecordingEvent::kCursorStays);
  }
  if (!options_.showsBorder) {
    check(platform_->LeaveOutBorder(), "The border cannot be left out: ", RecordingEvent::kBorderStays);
  }
}

void VideoCapture::Stop() {
  if (!running_) {
    Logger::Info("Capture session is not running");
    return;
  }
  running_ = false;
  EndDelivery();
  platform_->CloseSession();
  platform_->ReleaseTarget();
  Logger::Info("Video Capture stopped,trigger count " + std::to_string(delivery_->triggerCount()) +
               " , total frames processed: " + std::to_string(delivery_->framesProcessed()));
}

void VideoCapture::DetachEncoder() {
  EndDelivery();
}

void VideoCapture::EndDelivery() {
  if (!delivery_->Stop()) {
    Logger::Error(LeftBehindText("the frame that was arriving"));
  } else if (delivery_->paused()) {
    SettleKeptFrame();
  }
}

}  // namespace brisolte
