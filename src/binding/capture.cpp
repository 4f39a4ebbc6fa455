#include "binding/capture.h"

#include <cstdint>
#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include "binding/arguments.h"
#include "binding/module_data.h"
#include "binding/result_objects.h"
#include "binding/script_access.h"
#include "capture/codec_probe.h"
#include "capture/windows_recording_parts.h"
#include "common/guarded.h"
#include "common/text.h"

namespace brisolte {
namespace {

// About what a Direct3D device takes with its driver, at the least.
constexpr std::int64_t kDeviceBytes = 32LL * 1024 * 1024;

/// The array of what `list` gives. @throws std::runtime_error with `prefix` and the text of what went wrong
template <typename List>
Napi::Value ArrayOf(Napi::Env env, const std::string& prefix, List list) {
  try {
    return ToArray(env, list());
  } catch (const std::exception& error) {
    throw std::runtime_error(prefix + error.what());
  }
}

}  // namespace

Napi::Function Capture::Define(Napi::Env env) {
  return DefineClass(env, "Capture", Methods());
}

Napi::Function Capture::DefineForRecorder(Napi::Env env) {
  std::vector<PropertyDescriptor> methods = Methods();
  methods.push_back(Method<&Capture::OnEvent>("onEvent"));
  methods.push_back(Method<&Capture::SetPlayableThroughout>("setPlayableThroughout"));
  methods.push_back(Method<&Capture::SetAudioCodec>("setAudioCodec"));
  methods.push_back(Method<&Capture::PauseRecord>("pauseRecord"));
  methods.push_back(Method<&Capture::ResumeRecord>("resumeRecord"));
  methods.push_back(Method<&Capture::SetVolume>("setVolume"));
  methods.push_back(Method<&Capture::SetMuted>("setMuted"));
  methods.push_back(Method<&Capture::TakeLevels>("takeLevels"));
  methods.push_back(Method<&Capture::SetShowsCursor>("setShowsCursor"));
  methods.push_back(Method<&Capture::SetShowsBorder>("setShowsBorder"));
  methods.push_back(Method<&Capture::SetLargestPicture>("setLargestPicture"));
  methods.push_back(Method<&Capture::SetEncoderOptions>("setEncoderOptions"));
  return DefineClass(env, "Capture", methods);
}

std::vector<Capture::PropertyDescriptor> Capture::Methods() {
  return {
      Method<&Capture::StartRecord>("startRecord"),
      Method<&Capture::StopRecord>("stopRecord"),
      Method<&Capture::IsCapturing>("isCapturing"),
      Method<&Capture::GetMonitors>("getMonitors"),
      Method<&Capture::GetWindows>("getWindows"),
      Method<&Capture::CaptureScreenshot>("captureScreenshot"),
      Method<&Capture::SetMode>("setMode"),
      Method<&Capture::SetMonitor>("setMonitor"),
      Method<&Capture::SetMonitorByName>("setMonitorByName"),
      Method<&Capture::SetWindow>("setWindow"),
      Method<&Capture::SetRegion>("setRegion"),
      Method<&Capture::SetFrameRate>("setFrameRate"),
      Method<&Capture::SetOutputDir>("setOutputDir"),
      Method<&Capture::SetEncoder>("setEncoder"),
      Method<&Capture::SetBitrate>("setBitrate"),
      Method<&Capture::SetCursorCapture>("setCursorCapture"),
      Method<&Capture::SetBorderHighlight>("setBorderHighlight"),
      Method<&Capture::SetLogLevel>("setLogLevel"),
      Method<&Capture::GetLogLevel>("getLogLevel"),
      Method<&Capture::GetSaveFilePath>("getSaveFilePath"),
      Method<&Capture::GetMicrophones>("getMicrophones"),
      Method<&Capture::GetSpeakers>("getSpeakers"),
      Method<&Capture::SetMicrophoneDevice>("setMicrophoneDevice"),
      Method<&Capture::SetSpeakerDevice>("setSpeakerDevice"),
      Method<&Capture::SetAudioBitrate>("setAudioBitrate"),
      Method<&Capture::GetSupportVideoCodec>("getSupportVideoCodec"),
  };
}

template <Napi::Value (Capture::*method)(const Napi::CallbackInfo& info)>
Napi::ClassPropertyDescriptor<Capture> Capture::Method(const char* name) {
  // Like the methods of a class written in JavaScript.
  return InstanceMethod<&Capture::Call<method>>(name, napi_default_method);
}

template <Napi::Value (Capture::*method)(const Napi::CallbackInfo& info)>
Napi::Value Capture::Call(Info info) {
  try {
    return (this->*method)(info);
  } catch (const ScriptFailure&) {
    return {};
  } catch (const Napi::Error&) {
    throw;
  } catch (const std::exception& error) {
    throw Napi::Error::New(info.Env(), SystemTextToUtf8(error.what()));
  }
}

Capture::Capture(const Napi::CallbackInfo& info)
    : Napi::ObjectWrap<Capture>(info),
      running_(info.Env().GetInstanceData<ModuleData>()->running),
      weight_(info.Env(), kDeviceBytes),
      controller_(CreateWindowsRecordingParts()) {}

Capture::~Capture() {
  running_->Remove(*this);
}

void Capture::StopAtExit() {
  Guarded("Capture: ", "in StopAtExit", [this] {
    const bool stopped = controller_.stopRecord();
    HoldWhileCapturing();
    return stopped;
  });
}

void Capture::HoldWhileCapturing() {
  const bool capturing = controller_.isCapturing();
  if (capturing == held_) {
    return;
  }
  held_ = capturing;
  if (capturing) {
    running_->Add(*this);
    Ref();
  } else {
    running_->Remove(*this);
    Unref();
  }
}

Napi::Value Capture::StartRecord(Info info) {
  info.Env().GetInstanceData<ModuleData>()->exitListener.Listen();
  const bool started = controller_.startRecord();
  HoldWhileCapturing();
  return Napi::Boolean::New(info.Env(), started);
}

Napi::Value Capture::StopRecord(Info info) {
  const bool stopped = controller_.stopRecord();
  HoldWhileCapturing();
  return Napi::Boolean::New(info.Env(), stopped);
}

Napi::Value Capture::IsCapturing(Info info) {
  return Napi::Boolean::New(info.Env(), controller_.isCapturing());
}

Napi::Value Capture::GetMonitors(Info info) {
  return ArrayOf(info.Env(), "Error getting monitors: ", [this] { return controller_.getMonitors(); });
}

Napi::Value Capture::GetWindows(Info info) {
  return ArrayOf(info.Env(), "Error getting windows: ", [this] { return controller_.getWindows(); });
}

Napi::Value Capture::CaptureScreenshot(Info info) {
  const std::string path = StringArgument(info, "Capturing screenshot requires a file path parameter");
  return Napi::Boolean::New(info.Env(), controller_.captureScreenshot(path));
}

Napi::Value Capture::GetSaveFilePath(Info info) {
  return Napi::String::New(info.Env(), controller_.getSaveFilePath());
}

Napi::Value Capture::GetMicrophones(Info info) {
  return ArrayOf(info.Env(), "Error getting microphones: ", [this] { return controller_.getMicrophones(); });
}

Napi::Value Capture::GetSpeakers(Info info) {
  return ArrayOf(info.Env(), "Error getting speakers: ", [this] { return controller_.getSpeakers(); });
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): the class binds members only.
Napi::Value Capture::GetSupportVideoCodec(Info info) {
  return ArrayOf(info.Env(),
                 "Error getting supported video codecs: ", [] { return GetSupportedVideoCodecs(); });
}

}  // namespace brisolte
