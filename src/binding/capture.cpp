#include "binding/capture.h"

#include <exception>
#include <string>

#include "binding/arguments.h"
#include "binding/result_objects.h"
#include "capture/codec_probe.h"
#include "capture/windows_recording_parts.h"
#include "common/logger.h"

namespace brisolte {
namespace {

/// The array of what `list` gives. @throws Napi::Error with `prefix` and the text of what went wrong
template <typename List>
Napi::Value ArrayOf(Napi::Env env, const std::string& prefix, List list) {
  try {
    return ToArray(env, list());
  } catch (const std::exception& error) {
    throw Napi::Error::New(env, prefix + error.what());
  }
}

}  // namespace

Napi::Function Capture::Define(Napi::Env env) {
  // Like the methods of a class written in JavaScript.
  constexpr napi_property_attributes kMethod = napi_default_method;
  return DefineClass(env, "Capture",
                     {
                         InstanceMethod<&Capture::StartRecord>("startRecord", kMethod),
                         InstanceMethod<&Capture::StopRecord>("stopRecord", kMethod),
                         InstanceMethod<&Capture::IsCapturing>("isCapturing", kMethod),
                         InstanceMethod<&Capture::GetMonitors>("getMonitors", kMethod),
                         InstanceMethod<&Capture::GetWindows>("getWindows", kMethod),
                         InstanceMethod<&Capture::CaptureScreenshot>("captureScreenshot", kMethod),
                         InstanceMethod<&Capture::SetMode>("setMode", kMethod),
                         InstanceMethod<&Capture::SetMonitor>("setMonitor", kMethod),
                         InstanceMethod<&Capture::SetMonitorByName>("setMonitorByName", kMethod),
                         InstanceMethod<&Capture::SetWindow>("setWindow", kMethod),
                         InstanceMethod<&Capture::SetRegion>("setRegion", kMethod),
                         InstanceMethod<&Capture::SetFrameRate>("setFrameRate", kMethod),
                         InstanceMethod<&Capture::SetOutputDir>("setOutputDir", kMethod),
                         InstanceMethod<&Capture::SetEncoder>("setEncoder", kMethod),
                         InstanceMethod<&Capture::SetBitrate>("setBitrate", kMethod),
                         InstanceMethod<&Capture::SetCursorCapture>("setCursorCapture", kMethod),
                         InstanceMethod<&Capture::SetBorderHighlight>("setBorderHighlight", kMethod),
                         InstanceMethod<&Capture::SetLogLevel>("setLogLevel", kMethod),
                         InstanceMethod<&Capture::GetLogLevel>("getLogLevel", kMethod),
                         InstanceMethod<&Capture::GetSaveFilePath>("getSaveFilePath", kMethod),
                         InstanceMethod<&Capture::GetMicrophones>("getMicrophones", kMethod),
                         InstanceMethod<&Capture::GetSpeakers>("getSpeakers", kMethod),
                         InstanceMethod<&Capture::SetMicrophoneDevice>("setMicrophoneDevice", kMethod),
                         InstanceMethod<&Capture::SetSpeakerDevice>("setSpeakerDevice", kMethod),
                         InstanceMethod<&Capture::SetAudioBitrate>("setAudioBitrate", kMethod),
                         InstanceMethod<&Capture::GetSupportVideoCodec>("getSupportVideoCodec", kMethod),
                     });
}

Capture::Capture(const Napi::CallbackInfo& info)
    : Napi::ObjectWrap<Capture>(info), controller_(CreateWindowsRecordingParts()) {}

Napi::Value Capture::StartRecord(Info info) {
  return Napi::Boolean::New(info.Env(), controller_.startRecord());
}

Napi::Value Capture::StopRecord(Info info) {
  return Napi::Boolean::New(info.Env(), controller_.stopRecord());
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
