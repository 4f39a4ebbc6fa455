#include "capture/capture_controller.h"

#include <algorithm>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>

#include "common/file_system.h"
#include "common/full_path.h"
#include "common/logger.h"

namespace brisolte {
namespace {

/// @throws std::filesystem::filesystem_error
bool NamesDirectory(const std::string& text) {
  // A system call would see the part before the NUL, which is not what the text names.
  const bool isPath = !text.empty() && text.find('\0') == std::string::npos;
  return isPath && IsDirectory(FullFolderPath(text));
}

}  // namespace

CaptureController::CaptureController(std::unique_ptr<RecordingParts> parts) : parts_(std::move(parts)) {
  if (!parts_->CreateGraphicsDevice()) {
    throw std::runtime_error("Failed to initialize Direct3D11 device");
  }
}

CaptureController::~CaptureController() {
  {
    const std::lock_guard guard(lock_);
    // The encoders go before the captures that may be feeding them right now.
    DetachCaptures();
    parts_->ReleaseGraphicsDevice();
  }
  encoders_.Clear();
  audioCapture_.reset();
  videoCapture_.reset();
}

CaptureSettings CaptureController::settings() const {
  const std::lock_guard guard(lock_);
  return settings_;
}

template <typename Change>
bool CaptureController::ChangeWhenIdle(std::string_view refusal, Change change) {
  const std::lock_guard guard(lock_);
  if (isCapturing()) {
    if (!refusal.empty()) {
      Logger::Error(refusal);
    }
    return false;
  }
  return change(settings_);
}

bool CaptureController::setMode(CaptureMode mode) {
  return ChangeWhenIdle({}, [&](CaptureSettings& settings) {
    settings.mode = mode;
    return true;
  });
}

bool CaptureController::setMonitor(std::int32_t monitorIndex) {
  return ChangeWhenIdle({}, [&](CaptureSettings& settings) {
    settings.monitorIndex = monitorIndex;
    settings.mode = CaptureMode::kScreen;
    return true;
  });
}

bool CaptureController::setMonitorByName(const std::string& name) {
  return ChangeWhenIdle({}, [&](CaptureSettings& settings) {
    const std::vector<MonitorEntry> monitors = parts_->desktop().Monitors();
    const auto monitor = std::ranges::find(monitors, name, &MonitorEntry::name);
    if (monitor == monitors.end()) {
      return false;
    }
    settings.monitorIndex = monitor->index;
    settings.mode = CaptureMode::kScreen;
    return true;
  });
}

bool CaptureController::setWindow(std::int64_t windowHandle) {
  return ChangeWhenIdle({}, [&](CaptureSettings& settings) {
    settings.windowHandle = windowHandle;
    settings.mode = CaptureMode::kWindow;
    return true;
  });
}

bool CaptureController::setRegion(const CaptureRegion& region) {
  return ChangeWhenIdle({}, [&](CaptureSettings& settings) {
    settings.region = region;
    settings.mode = CaptureMode::kRegion;
    return true;
  });
}

bool CaptureController::setFrameRate(std::int32_t frameRate) {
  return ChangeWhenIdle({}, [&](CaptureSettings& settings) {
    settings.frameRate = frameRate;
    return true;
  });
}

bool CaptureController::setBitrate(std::int32_t bitrate) {
  return ChangeWhenIdle({}, [&](CaptureSettings& settings) {
    settings.bitrate = bitrate;
    return true;
  });
}

bool CaptureController::setEncoder(const std::string& name) {
  return ChangeWhenIdle({}, [&](CaptureSettings& settings) {
    settings.useMediaFoundation = name == "mf_h264" || name == "mf_hevc" ? 1 : 0;
    settings.encoderName = name;
    return true;
  });
}

bool CaptureController::setCursorCapture(bool captureCursor) {
  return ChangeWhenIdle({}, [&](CaptureSettings& settings) {
    settings.captureCursor = captureCursor;
    return true;
  });
}

bool CaptureController::setBorderHighlight(bool borderHighlight) {
  return ChangeWhenIdle({}, [&](CaptureSettings& settings) {
    settings.borderHighlight = borderHighlight;
    return true;
  });
}

bool CaptureController::setMicrophoneDevice(const std::string& deviceId) {
  return ChangeWhenIdle("Cannot set microphone device while capturing", [&](CaptureSettings& settings) {
    settings.microphoneDeviceId = deviceId;
    return true;
  });
}

bool CaptureController::setSpeakerDevice(const std::string& deviceId) {
  return ChangeWhenIdle("Cannot set speaker device while capturing", [&](CaptureSettings& settings) {
    settings.speakerDeviceId = deviceId;
    return true;
  });
}

bool CaptureController::setAudioBitrate(std::int32_t audioBitrate) {
  return ChangeWhenIdle("Cannot set audio bitrate while capturing", [&](CaptureSettings& settings) {
    if (audioBitrate <= 0) {
      Logger::Error("Invalid audio bitrate");
      return false;
    }
    settings.audioBitrate = audioBitrate;
    return true;
  });
}

bool CaptureController::setOptions(const RecordingOptions& options) {
  return ChangeWhenIdle({}, [&](CaptureSettings& /*settings*/) {
    options_ = options;
    return true;
  });
}

bool CaptureController::setOutputDir(const std::string& directory) {
  return ChangeWhenIdle("Cannot set output directory while capturing", [&](CaptureSettings& settings) {
    if (!NamesDirectory(directory)) {
      Logger::Error("Invalid or non-existent output directory: " + directory);
      return false;
    }
    settings.outputDir = directory;
    Logger::Info("Output directory set to: " + directory);
    return true;
  });
}

std::vector<AudioDeviceInfo> CaptureController::getMicrophones() {
  const std::lock_guard guard(lock_);
  Logger::Info("Starting microphone enumeration...");
  std::vector<AudioDeviceInfo> devices = parts_->ListMicrophones();
  Logger::Info("Microphone enumeration completed, found " + std::to_string(devices.size()) +
               " microphone devices");
  return devices;
}

std::vector<AudioDeviceInfo> CaptureController::getSpeakers() {
  const std::lock_guard guard(lock_);
  Logger::Info("Starting speaker enumeration...");
  std::vector<AudioDeviceInfo> devices = parts_->ListSpeakers();
  Logger::Info("Speaker enumeration completed, found " + std::to_string(devices.size()) + " speaker devices");
  return devices;
}

bool CaptureController::captureScreenshot(const std::string& filePath) {
  const std::lock_guard guard(lock_);
  return parts_->CaptureScreenshot(settings_, filePath);
}

}  // namespace brisolte
