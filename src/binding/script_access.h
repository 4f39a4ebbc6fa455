#pragma once

#include <napi.h>

#include <initializer_list>

namespace brisolte {

/// Code of the script did not return: what it threw stays pending, or nothing is when its time or its thread
/// has ended. Nobody may ask for an exception then, or for more of the script; the call just returns. A
/// Napi::Error in its place ends the process when there is nothing that was thrown.
struct ScriptFailure {};

/// Each runs what the script has put there: getters, proxies, listeners. @throws ScriptFailure
bool HasProperty(const Napi::Object& object, const char* name);
Napi::Value GetProperty(const Napi::Object& object, const char* name);
Napi::Value CallMethod(const Napi::Object& object, const char* name,
                       std::initializer_list<napi_value> arguments);

}  // namespace brisolte
