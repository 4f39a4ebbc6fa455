#include "binding/result_objects.h"

namespace brisolte {
namespace {

Napi::Object ToObject(Napi::Env env, const Rectangle& rect) {
  Napi::Object object = Napi::Object::New(env);
  object.Set("left", rect.left);
  object.Set("top", rect.top);
  object.Set("right", rect.right);
  object.Set("bottom", rect.bottom);
  object.Set("width", static_cast<double>(rect.width()));
  object.Set("height", static_cast<double>(rect.height()));
  return object;
}

Napi::Array ToArray(Napi::Env env, const std::vector<std::string>& texts) {
  const Napi::Array array = Napi::Array::New(env, texts.size());
  for (std::uint32_t index = 0; index < texts.size(); ++index) {
    array.Set(index, texts[index]);
  }
  return array;
}

}  // namespace

Napi::Object ToObject(Napi::Env env, const MonitorEntry& monitor) {
  const Napi::Object rect = ToObject(env, monitor.rect);
  Napi::Object object = Napi::Object::New(env);
  object.Set("index", monitor.index);
  object.Set("name", monitor.name);
  object.Set("isPrimary", monitor.isPrimary);
  object.Set("rect", rect);
  return object;
}

Napi::Object ToObject(Napi::Env env, const WindowEntry& window) {
  const Napi::Object rect = ToObject(env, window.rect);
  Napi::Object object = Napi::Object::New(env);
  object.Set("handle", static_cast<double>(window.handle));
  object.Set("title", window.title);
  object.Set("className", window.className);
  object.Set("rect", rect);
  return object;
}

Napi::Object ToObject(Napi::Env env, const AudioDeviceInfo& device) {
  Napi::Object object = Napi::Object::New(env);
  object.Set("id", device.id);
  object.Set("name", device.name);
  object.Set("isDefault", device.isDefault);
  object.Set("isActive", device.isActive);
  return object;
}

Napi::Object ToObject(Napi::Env env, const CodecDescription& codec) {
  Napi::Object object = Napi::Object::New(env);
  object.Set("id", codec.codecId);
  object.Set("name", codec.name);
  object.Set("description", codec.description);
  object.Set("isHardwareAccel", codec.isHardwareAccel);
  object.Set("pixelFormats", ToArray(env, codec.pixelFormats));
  return object;
}

}  // namespace brisolte
