#pragma once

#include <napi.h>

namespace brisolte {

/// What a module does when it is loaded into an environment: gives its exports the class that `define` makes.
/// Nothing that goes wrong leaves it but as an exception of JavaScript.
napi_value ExportClass(napi_env env, napi_value exports, Napi::Function (*define)(Napi::Env env));

}  // namespace brisolte
