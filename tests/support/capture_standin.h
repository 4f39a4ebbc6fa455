#pragma once

#include <windows.h>

#include "support/exported_function.h"

namespace brisolte::testing {

/// Whether the stand-in for the capture service gets to have no object alive; its threads let go of theirs in
/// their own time.
inline bool ServiceBecomesEmpty() {
  using Count = long(WINAPI*)();
  const auto count = ExportedFunction<Count>(GetModuleHandleW(L"GraphicsCapture.dll"), "StandinObjectCount");
  for (int i = 0; i < 2000 && count() != 0; ++i) {
    Sleep(10);
  }
  return count() == 0;
}

/// How often this process let go of COM after it had used the capture service, which on a real system unloads
/// the service's library under the service's threads.
inline long ComLetGoCount() {
  using Count = long(WINAPI*)();
  const HMODULE standin = GetModuleHandleW(L"GraphicsCapture.dll");
  return standin == nullptr ? 0 : ExportedFunction<Count>(standin, "StandinComLetGoCount")();
}

}  // namespace brisolte::testing
