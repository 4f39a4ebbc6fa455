#include "binding/exit_listener.h"

#include <cstdint>
#include <utility>

#include "binding/script_access.h"

namespace brisolte {
namespace {

constexpr auto kEvent = "exit";

}  // namespace

ExitListener::ExitListener(Napi::Env env, std::function<void()> onExit)
    : listener_(Napi::Persistent(Napi::Function::New(
          env, [onExit = std::move(onExit)](const Napi::CallbackInfo& /*info*/) { onExit(); },
          "stopRecordings"))) {}

void ExitListener::Listen() {
  const Napi::Env env = listener_.Env();
  const Napi::HandleScope scope(env);
  const Napi::Value process = GetProperty(env.Global(), "process");
  if (!process.IsObject()) {
    return;
  }
  const auto emitter = process.As<Napi::Object>();
  if (GetProperty(emitter, "prependListener").IsFunction() && !ListensTo(emitter)) {
    CallMethod(emitter, "prependListener", {Napi::String::New(env, kEvent), listener_.Value()});
  }
}

bool ExitListener::ListensTo(const Napi::Object& process) const {
  const Napi::Value list = CallMethod(process, "listeners", {Napi::String::New(process.Env(), kEvent)});
  if (!list.IsArray()) {
    return false;
  }
  const auto listeners = list.As<Napi::Array>();
  for (std::uint32_t index = 0; index < listeners.Length(); ++index) {
    if (Napi::Value(listeners.Get(index)).StrictEquals(listener_.Value())) {
      return true;
    }
  }
  return false;
}

}  // namespace brisolte
