#pragma once

#include <napi.h>

#include <cstdint>
#include <vector>

#include "audio/audio_device_info.h"
#include "capture/codec_probe.h"
#include "desktop/monitors.h"
#include "desktop/windows.h"

namespace brisolte {

Napi::Object ToObject(Napi::Env env, const MonitorEntry& monitor);
Napi::Object ToObject(Napi::Env env, const WindowEntry& window);
Napi::Object ToObject(Napi::Env env, const AudioDeviceInfo& device);
Napi::Object ToObject(Napi::Env env, const CodecDescription& codec);

/// A fresh array of fresh objects, one for each record and in the same order.
template <typename Record>
Napi::Array ToArray(Napi::Env env, const std::vector<Record>& records) {
  const Napi::Array array = Napi::Array::New(env, records.size());
  std::uint32_t index = 0;
  for (const Record& record : records) {
    // A long list would otherwise keep every value alive until the call ends.
    const Napi::HandleScope scope(env);
    array.Set(index, ToObject(env, record));
    ++index;
  }
  return array;
}

}  // namespace brisolte
