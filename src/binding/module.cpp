// brisolte.node: the class that applications instantiate.

#include "binding/capture.h"
#include "binding/exports.h"

NAPI_MODULE_INIT() {
  return brisolte::ExportClass(env, exports, brisolte::Capture::Define);
}
