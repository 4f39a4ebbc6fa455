#include <napi.h>

#include <memory>

#include "binding/capture.h"
#include "binding/host_functions.h"
#include "binding/module_data.h"
#include "binding/pinned_module.h"
#include "binding/script_access.h"

namespace brisolte {
namespace {

Napi::Object InitializeModule(Napi::Env env, Napi::Object exports) {
  PinModule();
  const Napi::Function constructor = Capture::Define(env);
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

}  // namespace
}  // namespace brisolte

NAPI_MODULE_INIT() {
  try {
    if (brisolte::BindHostFunctions(env)) {
      return Napi::RegisterModule(env, exports, brisolte::InitializeModule);
    }
  } catch (...) {
    // What could not be handed on as a JavaScript exception must not pass through Node.js as one of C++.
  }
  return nullptr;
}
