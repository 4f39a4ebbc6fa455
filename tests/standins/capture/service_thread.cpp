#include "capture/service_thread.h"

#include <windows.h>

#include <system_error>
#include <thread>

namespace brisolte::standins {

namespace {

// A thread may outlive everything that its caller owns, and its code must not go away under it.
bool KeepLoaded() {
  HMODULE self = nullptr;
  return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                            reinterpret_cast<LPCWSTR>(&KeepLoaded), &self) != FALSE;
}

}  // namespace

bool StartServiceThread(std::function<void()> work) {
  try {
    return KeepLoaded() && (std::thread([work = std::move(work)]() mutable {
                              work();
                              work = nullptr;
                            }).detach(),
                            true);
  } catch (const std::system_error&) {
    return false;
  }
}

}  // namespace brisolte::standins
