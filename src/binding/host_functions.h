#pragma once

#include <node_api.h>

namespace brisolte {

/// Makes the Node-API functions of the running program callable; comes before every other use of Node-API.
/// Any thread. False, with a JavaScript exception pending, when the program lacks one of them.
bool BindHostFunctions(napi_env env);

}  // namespace brisolte
