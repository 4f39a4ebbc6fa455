#pragma once

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "fake_encoder.h"
#include "fake_system.h"
#include "support/captured_log.h"
#include "video/video_capture.h"

namespace brisolte::testing {

/// A capture on a system of fakes.
class VideoCaptureTest : public ::testing::Test {
 public:
  VideoCaptureTest(const VideoCaptureTest&) = delete;
  VideoCaptureTest& operator=(const VideoCaptureTest&) = delete;

 protected:
  VideoCaptureTest() { Logger::SetLevel(LogLevel::kFatal); }
  ~VideoCaptureTest() override { Logger::SetLevel(levelBefore_); }

  std::unique_ptr<VideoCapture> Construct() {
    return std::make_unique<VideoCapture>(settings_, encoder_, system_->desktop, clock_,
                                          std::make_unique<FakeCapturePlatform>(system_), options_);
  }

  std::unique_ptr<VideoCapture> Running() {
    auto capture = Construct();
    EXPECT_TRUE(capture->initialized());
    EXPECT_TRUE(capture->Start());
    system_->journal.Clear();
    return capture;
  }

  /// The lines of a construction that must fail.
  std::vector<std::string> FailedLines() {
    const CapturedLog log(LogLevel::kWarn);
    EXPECT_FALSE(Construct()->initialized());
    return log.lines();
  }

  std::vector<std::string> calls() const { return system_->journal.entries(); }

  CaptureSettings settings_;
  RecordingOptions options_;
  std::shared_ptr<FakeSystem> system_ = std::make_shared<FakeSystem>();
  FakeEncoder encoder_{system_->journal};
  std::shared_ptr<PausableClock> clock_ = std::make_shared<PausableClock>();

 private:
  LogLevel levelBefore_ = Logger::Level();
};

/// The text of the failure that fakes answer with.
inline std::string FailureText() {
  return HResultText(kFailure);
}

}  // namespace brisolte::testing
