#include "binding/pinned_module.h"

#include <windows.h>

#include "common/hresult_error.h"

namespace brisolte {

void PinModule() {
  constexpr DWORD kFlags = GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS;
  HMODULE module = nullptr;
  if (GetModuleHandleExW(kFlags, reinterpret_cast<const wchar_t*>(&PinModule), &module) == 0) {
    throw HResultError(HRESULT_FROM_WIN32(GetLastError()));
  }
}

}  // namespace brisolte
