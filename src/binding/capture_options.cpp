// What a recorder's process asks of the class beyond its 26 methods.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "binding/arguments.h"
#include "binding/capture.h"
#include "binding/event_listener.h"

namespace brisolte {
namespace {

const char* NameOf(RecordingEvent event) {
  switch (event) {
    case RecordingEvent::kCursorStays:
      return "cursorStays";
    case RecordingEvent::kBorderStays:
      return "borderStays";
    case RecordingEvent::kDiskFull:
      return "diskFull";
  }
  return "";
}

std::optional<SoundCodec> CodecNamed(const std::string& name) {
  if (name == "mp3") {
    return SoundCodec::kMp3;
  }
  if (name == "aac") {
    return SoundCodec::kAac;
  }
  if (name == "opus") {
    return SoundCodec::kOpus;
  }
  return std::nullopt;
}

}  // namespace

Napi::Value Capture::SetPlayableThroughout(Info info) {
  RecordingOptions options = options_;
  options.playableThroughout =
      BooleanArgument(info, "Setting playable throughout requires a boolean parameter");
  return SetOptions(info, options);
}

Napi::Value Capture::SetAudioCodec(Info info) {
  constexpr const char* kNeeded = "Setting audio codec requires aac, mp3 or opus";
  const auto codec = CodecNamed(StringArgument(info, kNeeded));
  Require(info, codec.has_value(), kNeeded);
  Require(info, info.Length() < 2 || info[1].IsUndefined() || info[1].IsNumber(),
          "An audio codec's bit rate must be a number");
  RecordingOptions options = options_;
  options.sound = {*codec, info[1].IsNumber() ? info[1].As<Napi::Number>().Int32Value() : 0};
  return SetOptions(info, options);
}

Napi::Value Capture::SetShowsCursor(Info info) {
  RecordingOptions options = options_;
  options.showsCursor = BooleanArgument(info, "Setting the cursor requires a boolean parameter");
  return SetOptions(info, options);
}

Napi::Value Capture::SetShowsBorder(Info info) {
  RecordingOptions options = options_;
  options.showsBorder = BooleanArgument(info, "Setting the border requires a boolean parameter");
  return SetOptions(info, options);
}

Napi::Value Capture::SetLargestPicture(Info info) {
  constexpr const char* kText = "Setting the largest picture requires an object parameter {width, height}";
  Require(info, info.Length() >= 1 && info[0].IsObject(), kText);
  const auto given = info[0].As<Napi::Object>();
  const Napi::Value width = given.Get("width");
  const Napi::Value height = given.Get("height");
  Require(info, width.IsNumber() && height.IsNumber(), kText);
  const PictureSize size{width.As<Napi::Number>().Int32Value(), height.As<Napi::Number>().Int32Value()};
  Require(info, size.width >= 2 && size.height >= 2, "The largest picture must be 2 by 2 or larger");
  RecordingOptions options = options_;
  options.largestPicture = size;
  return SetOptions(info, options);
}

Napi::Value Capture::SetEncoderOptions(Info info) {
  constexpr const char* kText = "Setting encoder options requires an object parameter with texts";
  Require(info, info.Length() >= 1 && info[0].IsObject(), kText);
  const auto given = info[0].As<Napi::Object>();
  const Napi::Array names = given.GetPropertyNames();
  RecordingOptions options = options_;
  options.encoderOptions.clear();
  for (std::uint32_t i = 0; i < names.Length(); ++i) {
    const Napi::Value name = names[i];
    const Napi::Value value = given.Get(name);
    Require(info, value.IsString(), kText);
    options.encoderOptions.push_back({name.ToString().Utf8Value(), value.As<Napi::String>().Utf8Value()});
  }
  return SetOptions(info, options);
}

Napi::Value Capture::OnEvent(Info info) {
  Require(info, info.Length() >= 1 && info[0].IsFunction(), "Listening to events requires a function");
  auto listener = std::make_shared<EventListener>(info.Env(), info[0].As<Napi::Function>());
  RecordingOptions options = options_;
  options.report = [listener = std::move(listener)](RecordingEvent event) { listener->Tell(NameOf(event)); };
  return SetOptions(info, options);
}

Napi::Value Capture::PauseRecord(Info info) {
  return Napi::Boolean::New(info.Env(), controller_.pauseRecord());
}

Napi::Value Capture::ResumeRecord(Info info) {
  return Napi::Boolean::New(info.Env(), controller_.resumeRecord());
}

SoundControl& Capture::SoundArgument(Info info) {
  const std::string sound = StringArgument(info, "A sound is \"microphone\" or \"speaker\"");
  Require(info, sound == "microphone" || sound == "speaker", "A sound is \"microphone\" or \"speaker\"");
  return sound == "microphone" ? controller_.sounds().microphone : controller_.sounds().speaker;
}

Napi::Value Capture::SetVolume(Info info) {
  constexpr float kLoudest = 10;
  SoundControl& sound = SoundArgument(info);
  const float volume = info[1].IsNumber() ? info[1].As<Napi::Number>().FloatValue() : -1;
  Require(info, volume >= 0 && volume <= kLoudest, "A volume is a number from 0 to 10");
  sound.SetVolume(volume);
  return Napi::Boolean::New(info.Env(), true);
}

Napi::Value Capture::SetMuted(Info info) {
  SoundControl& sound = SoundArgument(info);
  Require(info, info[1].IsBoolean(), "Muting a sound requires a boolean parameter");
  sound.Mute(info[1].As<Napi::Boolean>().Value());
  return Napi::Boolean::New(info.Env(), true);
}

Napi::Value Capture::TakeLevels(Info info) {
  Napi::Object levels = Napi::Object::New(info.Env());
  levels.Set("microphone", controller_.sounds().microphone.TakeLevel());
  levels.Set("speaker", controller_.sounds().speaker.TakeLevel());
  return levels;
}

Napi::Value Capture::SetOptions(Info info, const RecordingOptions& options) {
  const bool set = controller_.setOptions(options);
  if (set) {
    options_ = options;
  }
  return Napi::Boolean::New(info.Env(), set);
}

}  // namespace brisolte
