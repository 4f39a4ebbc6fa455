// The methods that set or read one setting.

#include <array>
#include <cstdint>
#include <string>

#include "binding/arguments.h"
#include "binding/capture.h"
#include "binding/script_access.h"
#include "common/logger.h"

namespace brisolte {
namespace {

// One sentence for two methods; scripts know it as it stands.
constexpr auto kOutputPathText = "Setting output file path requires a string parameter";

/// Runs the script's own code (getters, proxies). @throws Napi::Error, ScriptFailure
CaptureRegion RegionFrom(const Napi::CallbackInfo& info, const Napi::Object& object) {
  constexpr std::array kNames = {"left", "top", "width", "height"};
  for (const char* name : kNames) {
    Require(info, HasProperty(object, name),
            "Region object must contain left, top, width, height properties");
  }
  std::array<std::int32_t, kNames.size()> values{};
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    const Napi::Value value = GetProperty(object, kNames[i]);
    Require(info, value.IsNumber(), "A number was expected");
    values[i] = value.As<Napi::Number>().Int32Value();
  }
  return {.left = values[0], .top = values[1], .width = values[2], .height = values[3]};
}

}  // namespace

Napi::Value Capture::SetMode(Info info) {
  const std::int32_t mode = NumberArgument(info, "Setting capture mode requires a number parameter");
  Require(info, static_cast<std::uint32_t>(mode) + 1U <= 3U,
          "Invalid capture mode. Valid values: -1 (none), 0 (screen), 1 (window), 2 (region)");
  return Napi::Boolean::New(info.Env(), controller_.setMode(static_cast<CaptureMode>(mode)));
}

Napi::Value Capture::SetMonitor(Info info) {
  const std::int32_t index = NumberArgument(info, "Setting target monitor requires a number parameter");
  return Napi::Boolean::New(info.Env(), controller_.setMonitor(index));
}

Napi::Value Capture::SetMonitorByName(Info info) {
  const std::string name =
      StringArgument(info, "Setting target monitor requires a string parameter (monitor name)");
  return Napi::Boolean::New(info.Env(), controller_.setMonitorByName(name));
}

Napi::Value Capture::SetWindow(Info info) {
  Require(info, info.Length() >= 1 && info[0].IsNumber(),
          "Setting target window requires a number parameter (window handle)");
  return Napi::Boolean::New(info.Env(), controller_.setWindow(info[0].As<Napi::Number>().Int64Value()));
}

Napi::Value Capture::SetRegion(Info info) {
  Require(info, info.Length() >= 1 && info[0].IsObject(),
          "Setting capture region requires an object parameter {left, top, width, height}");
  const CaptureRegion region = RegionFrom(info, info[0].As<Napi::Object>());
  return Napi::Boolean::New(info.Env(), controller_.setRegion(region));
}

Napi::Value Capture::SetFrameRate(Info info) {
  const std::int32_t frameRate = NumberArgument(info, "Setting frame rate requires a number parameter");
  Require(info, frameRate >= 1 && frameRate <= 120, "Frame rate must be in the range 1-120");
  return Napi::Boolean::New(info.Env(), controller_.setFrameRate(frameRate));
}

Napi::Value Capture::SetOutputDir(Info info) {
  return Napi::Boolean::New(info.Env(), controller_.setOutputDir(StringArgument(info, kOutputPathText)));
}

Napi::Value Capture::SetEncoder(Info info) {
  return Napi::Boolean::New(info.Env(), controller_.setEncoder(StringArgument(info, kOutputPathText)));
}

Napi::Value Capture::SetBitrate(Info info) {
  const std::int32_t bitrate = NumberArgument(info, "Setting bitrate requires a number parameter");
  Require(info, bitrate >= 100'000 && bitrate <= 50'000'000, "Bitrate must be in the range 100Kbps-50Mbps");
  return Napi::Boolean::New(info.Env(), controller_.setBitrate(bitrate));
}

Napi::Value Capture::SetCursorCapture(Info info) {
  const bool captureCursor = BooleanArgument(info, "Setting cursor capture requires a boolean parameter");
  return Napi::Boolean::New(info.Env(), controller_.setCursorCapture(captureCursor));
}

Napi::Value Capture::SetBorderHighlight(Info info) {
  const bool borderHighlight = BooleanArgument(info, "Setting border highlight requires a boolean parameter");
  return Napi::Boolean::New(info.Env(), controller_.setBorderHighlight(borderHighlight));
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): the class binds members only.
Napi::Value Capture::SetLogLevel(Info info) {
  const std::int32_t level = NumberArgument(info, "Setting log level requires a number parameter");
  Require(info, level >= 0 && level <= 5,
          "Invalid log level. Valid values: 0 (TRACE), 1 (DEBUG), 2 (INFO), 3 (WARN), 4 (ERROR), 5 (FATAL)");
  Logger::SetLevel(static_cast<LogLevel>(level));
  return info.Env().Undefined();
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): the class binds members only.
Napi::Value Capture::GetLogLevel(Info info) {
  const auto level = static_cast<std::int32_t>(Logger::Level());
  return Napi::Number::New(info.Env(), level >= 0 && level <= 5 ? level : 2);
}

Napi::Value Capture::SetMicrophoneDevice(Info info) {
  const std::string deviceId =
      StringArgument(info, "Setting microphone device requires a string parameter (device ID)");
  return Napi::Boolean::New(info.Env(), controller_.setMicrophoneDevice(deviceId));
}

Napi::Value Capture::SetSpeakerDevice(Info info) {
  const std::string deviceId =
      StringArgument(info, "Setting speaker device requires a string parameter (device ID)");
  return Napi::Boolean::New(info.Env(), controller_.setSpeakerDevice(deviceId));
}

Napi::Value Capture::SetAudioBitrate(Info info) {
  const std::int32_t audioBitrate = NumberArgument(info, "Setting audio bitrate requires a number parameter");
  return Napi::Boolean::New(info.Env(), controller_.setAudioBitrate(audioBitrate));
}

}  // namespace brisolte
