#include <windows.h>

/// Whoever loads it finds nothing in it and gives it back; it stays.
// NOLINTNEXTLINE(misc-use-internal-linkage): the system calls it.
BOOL WINAPI DllMain(HINSTANCE /*self*/, DWORD reason, LPVOID /*reserved*/) {
  HMODULE self = nullptr;
  return static_cast<BOOL>(
      reason != DLL_PROCESS_ATTACH ||
      GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                         reinterpret_cast<LPCWSTR>(&DllMain), &self) != FALSE);
}
