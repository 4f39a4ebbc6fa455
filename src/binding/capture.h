#pragma once

#include <napi.h>

#include <memory>
#include <vector>

#include "binding/external_memory.h"
#include "binding/running_captures.h"
#include "capture/capture_controller.h"
#include "capture/recording_options.h"

namespace brisolte {

/// The class that scripts instantiate: checks arguments, calls the controller and makes JavaScript values of
/// results. What it throws and what the controller raises arrives in JavaScript as an `Error` with its text.
/// Lives on the thread of its environment. The collector destroys it, but not while it records: only
/// stopRecord or the end of the environment ends a recording.
class Capture final : public Napi::ObjectWrap<Capture> {
 public:
  /// Makes the class for an environment.
  static Napi::Function Define(Napi::Env env);

  /// The same, and what only a recorder's process asks for: `onEvent`, which takes the function that hears
  /// the events of the recordings that start from then on, `pauseRecord` and `resumeRecord`, what concerns
  /// the sounds while they are recorded, and setters for the fields of `RecordingOptions`.
  static Napi::Function DefineForRecorder(Napi::Env env);

  explicit Capture(const Napi::CallbackInfo& info);
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;
  ~Capture() override;

  /// Ends the recording when its environment announces its end. Logs what goes wrong.
  void StopAtExit();

 private:
  using Info = const Napi::CallbackInfo&;

  Napi::Value StartRecord(Info info);
  Napi::Value StopRecord(Info info);
  Napi::Value IsCapturing(Info info);
  Napi::Value GetMonitors(Info info);
  Napi::Value GetWindows(Info info);
  Napi::Value CaptureScreenshot(Info info);
  Napi::Value SetMode(Info info);
  Napi::Value SetMonitor(Info info);
  Napi::Value SetMonitorByName(Info info);
  Napi::Value SetWindow(Info info);
  Napi::Value SetRegion(Info info);
  Napi::Value SetFrameRate(Info info);
  Napi::Value SetOutputDir(Info info);
  Napi::Value SetEncoder(Info info);
  Napi::Value SetBitrate(Info info);
  Napi::Value SetCursorCapture(Info info);
  Napi::Value SetBorderHighlight(Info info);
  Napi::Value SetLogLevel(Info info);
  Napi::Value GetLogLevel(Info info);
  Napi::Value GetSaveFilePath(Info info);
  Napi::Value GetMicrophones(Info info);
  Napi::Value GetSpeakers(Info info);
  Napi::Value SetMicrophoneDevice(Info info);
  Napi::Value SetSpeakerDevice(Info info);
  Napi::Value SetAudioBitrate(Info info);
  Napi::Value GetSupportVideoCodec(Info info);
  Napi::Value OnEvent(Info info);
  Napi::Value SetPlayableThroughout(Info info);
  Napi::Value SetAudioCodec(Info info);
  Napi::Value PauseRecord(Info info);
  Napi::Value ResumeRecord(Info info);
  Napi::Value SetVolume(Info info);
  Napi::Value SetMuted(Info info);
  Napi::Value TakeLevels(Info info);
  Napi::Value SetShowsCursor(Info info);
  Napi::Value SetShowsBorder(Info info);
  Napi::Value SetLargestPicture(Info info);
  Napi::Value SetEncoderOptions(Info info);

  static std::vector<PropertyDescriptor> Methods();
  SoundControl& SoundArgument(Info info);
  Napi::Value SetOptions(Info info, const RecordingOptions& options);

  /// Describes a method of the class.
  template <Napi::Value (Capture::*method)(Info)>
  static Napi::ClassPropertyDescriptor<Capture> Method(const char* name);

  /// Calls a method; what the controller raises becomes an error with a text that JavaScript can show, and
  /// what the script itself raised stays as it is.
  template <Napi::Value (Capture::*method)(Info)>
  Napi::Value Call(Info info);

  /// Keeps the collector from this instance exactly while it records.
  void HoldWhileCapturing();

  const std::shared_ptr<RunningCaptures> running_;
  bool held_ = false;
  const ExternalMemory weight_;
  RecordingOptions options_;  ///< as the controller has them
  CaptureController controller_;
};

}  // namespace brisolte
