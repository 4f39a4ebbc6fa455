#include "binding/script_access.h"

namespace brisolte {
namespace {

void Require(napi_status status) {
  if (status != napi_ok) {
    throw ScriptFailure();
  }
}

}  // namespace

bool HasProperty(const Napi::Object& object, const char* name) {
  bool has = false;
  Require(napi_has_named_property(object.Env(), object, name, &has));
  return has;
}

Napi::Value GetProperty(const Napi::Object& object, const char* name) {
  napi_value value = nullptr;
  Require(napi_get_named_property(object.Env(), object, name, &value));
  return {object.Env(), value};
}

Napi::Value CallMethod(const Napi::Object& object, const char* name,
                       std::initializer_list<napi_value> arguments) {
  const Napi::Value method = GetProperty(object, name);
  napi_value result = nullptr;
  Require(napi_call_function(object.Env(), object, method, arguments.size(), arguments.begin(), &result));
  return {object.Env(), result};
}

}  // namespace brisolte
