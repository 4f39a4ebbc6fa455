#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "audio/sound_control.h"
#include "capture/capture_settings.h"
#include "capture/encoder_slots.h"
#include "capture/recording_options.h"
#include "capture/recording_parts.h"
#include "capture/settings_lock.h"
#include "common/pausable_clock.h"

namespace brisolte {

/// What stands behind one instance in JavaScript: its settings, and its recording while there is one.
///
/// All operations are called on one thread. The setters, the recording and the screenshot hold the settings
/// lock while they run; calling one of them from within another raises the lock's std::system_error. A setter
/// answers false and changes nothing while a recording runs.
class CaptureController {
 public:
  /// @throws std::runtime_error when there is no graphics device
  explicit CaptureController(std::unique_ptr<RecordingParts> parts);
  CaptureController(const CaptureController&) = delete;
  CaptureController& operator=(const CaptureController&) = delete;

  /// Ends a recording that still runs by destroying its parts; the encoder completes its file.
  ~CaptureController();

  /// Starts a recording into a new file in the output directory. False, with an ERROR line, when it cannot.
  /// When an encoder or a capture was built but would not start, the failure arrives as the lock's
  /// std::system_error. What a failed attempt built stays until the next attempt replaces it.
  bool startRecord();

  /// Ends the recording; when it returns true the file is complete as far as it could be. False when there is
  /// none.
  bool stopRecord();

  /// Leaves out of the file what is captured from now on; nothing that captures is closed. False when no
  /// recording runs, and when it is paused.
  bool pauseRecord();

  /// Goes on, as if no time had passed. False when no recording is paused.
  bool resumeRecord();

  /// Whether a recording runs, also when it is paused. Any thread, without the lock.
  bool isCapturing() const { return capturing_.load(std::memory_order_relaxed); }

  /// The path of the latest recording, UTF-8; empty before the first. Without the lock.
  std::string getSaveFilePath() const { return settings_.outputFilePath; }

  /// A copy of the settings.
  CaptureSettings settings() const;

  bool setMode(CaptureMode mode);
  bool setMonitor(std::int32_t monitorIndex);
  bool setMonitorByName(const std::string& name);
  bool setWindow(std::int64_t windowHandle);
  bool setRegion(const CaptureRegion& region);
  bool setFrameRate(std::int32_t frameRate);
  bool setBitrate(std::int32_t bitrate);
  bool setEncoder(const std::string& name);
  bool setCursorCapture(bool captureCursor);
  bool setBorderHighlight(bool borderHighlight);
  bool setMicrophoneDevice(const std::string& deviceId);
  bool setSpeakerDevice(const std::string& deviceId);
  bool setAudioBitrate(std::int32_t audioBitrate);

  /// How loud its sounds are recorded, and how loud they are; at any time, without the lock.
  SoundControls& sounds() { return *sounds_; }

  /// What the recordings that start from now on are asked beyond the settings.
  bool setOptions(const RecordingOptions& options);

  /// Takes an existing directory (UTF-8). @throws std::filesystem::filesystem_error when its status cannot be
  /// read
  bool setOutputDir(const std::string& directory);

  std::vector<MonitorEntry> getMonitors() { return parts_->desktop().Monitors(); }
  std::vector<WindowEntry> getWindows() { return parts_->desktop().Windows(); }
  std::vector<AudioDeviceInfo> getMicrophones();
  std::vector<AudioDeviceInfo> getSpeakers();

  /// Writes a PNG of the current target to `filePath` (UTF-8).
  bool captureScreenshot(const std::string& filePath);

 private:
  /// Runs `change` on the settings unless a recording runs; then logs `refusal`, if it is not empty, as an
  /// ERROR.
  template <typename Change>
  bool ChangeWhenIdle(std::string_view refusal, Change change);

  bool BuildRecording();
  bool BuildCaptures();
  bool StartRecording();
  void StopStages();
  void DetachCaptures() noexcept;

  const std::unique_ptr<RecordingParts> parts_;
  std::atomic<bool> capturing_{false};
  CaptureSettings settings_;
  RecordingOptions options_;
  mutable SettingsLock lock_;
  const std::shared_ptr<SoundControls> sounds_ = std::make_shared<SoundControls>();
  std::shared_ptr<PausableClock> clock_;  ///< of the latest recording
  std::unique_ptr<CaptureSource> videoCapture_;
  std::unique_ptr<CaptureSource> audioCapture_;
  EncoderSlots encoders_;
};

}  // namespace brisolte
