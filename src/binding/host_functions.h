#pragma once

#include <node_api.h>

namespace brisolte {

/// Makes the Node-API functions of the running program callable; comes before every other use of Node-API.
/// Any thread. False when it lacks one of them, with a JavaScript exception pending if it has any.
bool BindHostFunctions(napi_env env);

}  // namespace brisolte
