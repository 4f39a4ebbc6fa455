#pragma once

#include <gmock/gmock.h>

#include <algorithm>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "encoder/mf/mf_encoder.h"
#include "mf/media_stage.h"
#include "mf/nv12_textures.h"
#include "mf/recording_platform.h"
#include "support/captured_log.h"
#include "support/hand_clock.h"

namespace brisolte::testing {

/// One that the system has no text for, so that its line is known byte for byte.
inline constexpr auto kFailure = static_cast<std::int32_t>(0xA1234567);
inline const std::string kFailureText = "HRESULT: 0xa1234567 (HRESULT: 0xa1234567)";

/// A float format of 48 kHz stereo, whose chunks have 15360 bytes.
inline WaveFormat FloatFormat() {
  return {.formatTag = WaveFormat::kIeeeFloatTag,
          .channels = 2,
          .sampleRate = 48'000,
          .averageBytesPerSecond = 384'000,
          .blockAlign = 8,
          .bitsPerSample = 32,
          .extraSize = 0,
          .floatingPoint = true};
}

/// A PCM format of 16 bits and one channel at 16 kHz, whose chunks have 1280 bytes.
inline WaveFormat PcmFormat() {
  return {.formatTag = WaveFormat::kPcmTag,
          .channels = 1,
          .sampleRate = 16'000,
          .averageBytesPerSecond = 32'000,
          .blockAlign = 2,
          .bitsPerSample = 16,
          .extraSize = 0,
          .floatingPoint = false};
}

/// The encoder on the system's Media Foundation, with a sink writer that records.
class MFEncoderTest : public ::testing::Test {
 protected:
  static constexpr std::uint32_t kWidth = 64;
  static constexpr std::uint32_t kHeight = 48;

  MFEncoderTest() {
    settings_.encoderName = "mf_h264";
    settings_.outputFilePath = "C:\\folder\\file.mp4";
    settings_.bitrate = 3'000'000;
    settings_.frameRate = 25;
  }

  void MakeEncoder() {
    encoder_ = std::make_unique<MFEncoder>(settings_, MakeRecordingPlatform(stage_), clock_.now());
  }

  /// An encoder with a video stream for textures of `device_`.
  void MakeWithVideo() {
    MakeEncoder();
    device_ = MakeCaptureDevice();
    ASSERT_TRUE(encoder_->InitializeVideoEncoder(kWidth, kHeight, device_.Get()));
    texture_ = MakeCaptureTexture(*device_.Get(), kWidth, kHeight);
  }

  /// Hands over the capture's texture, painted in this luma.
  bool ProcessFrame(std::int64_t timestamp, std::int64_t duration = 40, std::uint8_t luma = 100) {
    Paint(*texture_.Get(), luma);
    return ProcessTexture(texture_.Get(), timestamp, duration);
  }

  bool ProcessTexture(ID3D11Texture2D* texture, std::int64_t timestamp = 0, std::int64_t duration = 40) {
    VideoFrame frame;
    frame.texture = {texture, [](ID3D11Texture2D*) {}};
    frame.timestamp = timestamp;
    frame.duration = duration;
    return encoder_->ProcessFrameAsync(frame);
  }

  /// Waits for an ERROR line that begins so and that `TakeErrors` has not given yet.
  bool AwaitError(const std::string& begin = "") {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (std::chrono::steady_clock::now() < limit) {
      const auto lines = log_.lines();
      const auto unseen = lines.begin() + static_cast<std::ptrdiff_t>(linesSeen_);
      const auto found = [&](const auto& line) { return line.starts_with("[ERROR] " + begin); };
      if (std::any_of(unseen, lines.end(), found)) {
        return true;
      }
      std::this_thread::yield();
    }
    return false;
  }

  /// The ERROR lines since the last call.
  std::vector<std::string> TakeErrors() {
    std::vector<std::string> errors;
    const auto lines = log_.lines();
    for (; linesSeen_ < lines.size(); ++linesSeen_) {
      if (lines[linesSeen_].starts_with("[ERROR] ")) {
        errors.push_back(lines[linesSeen_].substr(8));
      }
    }
    return errors;
  }

  MediaStage stage_;
  HandClock clock_;
  CapturedLog log_{LogLevel::kInfo};
  CaptureSettings settings_;
  Microsoft::WRL::ComPtr<ID3D11Device> device_;
  Microsoft::WRL::ComPtr<ID3D11Texture2D> texture_;
  std::unique_ptr<MFEncoder> encoder_;

 private:
  std::size_t linesSeen_ = 0;
};

}  // namespace brisolte::testing
