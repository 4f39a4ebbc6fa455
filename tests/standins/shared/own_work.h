#pragma once

#include <windows.h>

#include "support/exported_function.h"

namespace brisolte::standins {

/// While one is alive, the Direct3D stand-in takes this thread's calls for those of another stand-in.
class OwnWork {
 public:
  OwnWork() { Turn(false); }
  ~OwnWork() { Turn(true); }
  OwnWork(const OwnWork&) = delete;
  OwnWork& operator=(const OwnWork&) = delete;
  OwnWork(OwnWork&&) = delete;
  OwnWork& operator=(OwnWork&&) = delete;

 private:
  static void Turn(bool on) {
    using TurnFaults = void (*)(bool);
    const auto turnFaults = ExportedFunction<TurnFaults>(GetModuleHandleW(L"d3d11.dll"), "StandinTurnFaults");
    if (turnFaults != nullptr) {
      turnFaults(on);
    }
  }
};

}  // namespace brisolte::standins
