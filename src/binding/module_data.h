#pragma once

#include <napi.h>

#include <memory>

#include "binding/exit_listener.h"
#include "binding/running_captures.h"

namespace brisolte {

/// What the module keeps for an environment, which deletes it when it ends.
struct ModuleData {
  Napi::FunctionReference constructor;
  /// Instances may go after the rest of this.
  std::shared_ptr<RunningCaptures> running;
  ExitListener exitListener;
};

}  // namespace brisolte
