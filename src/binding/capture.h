#pragma once

#include <napi.h>

#include "capture/capture_controller.h"

namespace brisolte {

/// The class that scripts instantiate: checks arguments, calls the controller and makes JavaScript values of
/// results. What it throws and what the controller raises arrives in JavaScript as an `Error` with its text.
/// Lives on the thread of its environment; the collector destroys it, and with it a recording that still
/// runs.
class Capture final : public Napi::ObjectWrap<Capture> {
 public:
  /// Makes the class for an environment.
  static Napi::Function Define(Napi::Env env);

  explicit Capture(const Napi::CallbackInfo& info);

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

  CaptureController controller_;
};

}  // namespace brisolte
