#include <napi.h>

#include <memory>

#include "binding/capture.h"
#include "binding/host_functions.h"

namespace brisolte {
namespace {

Napi::Object InitializeModule(Napi::Env env, Napi::Object exports) {
  const Napi::Function constructor = Capture::Define(env);
  auto reference = std::make_unique<Napi::FunctionReference>(Napi::Persistent(constructor));
  // The environment deletes it when it ends.
  env.SetInstanceData(reference.release());
  exports.Set("Brisolte", constructor);
  return exports;
}

}  // namespace
}  // namespace brisolte

NAPI_MODULE_INIT() {
  if (!brisolte::BindHostFunctions(env)) {
    return nullptr;
  }
  return Napi::RegisterModule(env, exports, brisolte::InitializeModule);
}
