#pragma once

#include <napi.h>

#include <cstdint>
#include <string>

namespace brisolte {

/// @throws Napi::Error with `text` unless `holds`
inline void Require(const Napi::CallbackInfo& info, bool holds, const char* text) {
  if (!holds) {
    throw Napi::Error::New(info.Env(), text);
  }
}

/// The first argument as a 32-bit number, as Node-API converts it. @throws Napi::Error with `text` for
/// another type
inline std::int32_t NumberArgument(const Napi::CallbackInfo& info, const char* text) {
  Require(info, info.Length() >= 1 && info[0].IsNumber(), text);
  return info[0].As<Napi::Number>().Int32Value();
}

/// The first argument as UTF-8. @throws Napi::Error with `text` for another type
inline std::string StringArgument(const Napi::CallbackInfo& info, const char* text) {
  Require(info, info.Length() >= 1 && info[0].IsString(), text);
  return info[0].As<Napi::String>().Utf8Value();
}

/// The first argument. @throws Napi::Error with `text` for another type
inline bool BooleanArgument(const Napi::CallbackInfo& info, const char* text) {
  Require(info, info.Length() >= 1 && info[0].IsBoolean(), text);
  return info[0].As<Napi::Boolean>().Value();
}

}  // namespace brisolte
