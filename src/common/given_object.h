#pragma once

#include <windows.h>

namespace brisolte {

/// The result of a call that gives something through `object`, a pointer of any kind: E_POINTER when the call
/// succeeded and yet gave nothing. What others put between us and the system is not always as it is
/// documented.
template <typename Pointer>
HRESULT Given(HRESULT result, const Pointer& object) {
  return SUCCEEDED(result) && object == nullptr ? E_POINTER : result;
}

}  // namespace brisolte
