#include "binding/exports.h"

#include <exception>
#include <memory>

#include "binding/exit_listener.h"
#include "binding/host_functions.h"
#include "binding/module_data.h"
#include "binding/pinned_module.h"
#include "binding/script_access.h"

namespace brisolte {
namespace {

Napi::Object Export(Napi::Env env, Napi::Object exports, Napi::Function (*define)(Napi::Env env)) {
  PinModule();
  const Napi::Function constructor = define(env);
  const auto running = std::make_shared<RunningCaptures>();
  auto data = std::make_unique<ModuleData>(ModuleData{
      .constructor = Napi::Persistent(constructor),
      .running = running,
      .exitListener = ExitListener(env, [running] { running->StopAll(); }),
  });
  try {
    data->exitListener.Listen();
  } catch (const ScriptFailure&) {
    return exports;
  }
  env.SetInstanceData(data.release());
  exports.Set("Brisolte", constructor);
  return exports;
}

napi_value ExportOrThrow(Napi::Env env, napi_value exports, Napi::Function (*define)(Napi::Env env)) {
  try {
    return Export(env, Napi::Object(env, exports), define);
  } catch (const Napi::Error& error) {
    error.ThrowAsJavaScriptException();
  } catch (const std::exception& error) {
    Napi::Error::New(env, error.what()).ThrowAsJavaScriptException();
  }
  return nullptr;
}

}  // namespace

napi_value ExportClass(napi_env env, napi_value exports, Napi::Function (*define)(Napi::Env env)) {
  try {
    return BindHostFunctions(env) ? ExportOrThrow(env, exports, define) : nullptr;
  } catch (...) {
    // What could not be handed on as a JavaScript exception must not pass through Node.js as one of C++.
    return nullptr;
  }
}

}  // namespace brisolte
