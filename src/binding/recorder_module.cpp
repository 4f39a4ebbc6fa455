// recorder.node: the same class for the process of a `Recorder`, which asks for more.

#include "binding/capture.h"
#include "binding/exports.h"

NAPI_MODULE_INIT() {
  return brisolte::ExportClass(env, exports, brisolte::Capture::DefineForRecorder);
}
