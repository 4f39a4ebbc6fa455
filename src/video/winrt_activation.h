#pragma once

#include <combaseapi.h>
#include <wrl/client.h>

namespace brisolte {

/// Finds the factories of WinRT classes on any thread. What it found is to be used only as long as it lives.
///
/// On a thread without COM it keeps the process's multithreaded apartment alive, which such threads then
/// belong to. It does not initialise COM for the thread: that would decide about an apartment that is not
/// ours to choose.
class WinRtActivation {
 public:
  WinRtActivation() = default;
  WinRtActivation(const WinRtActivation&) = delete;
  WinRtActivation& operator=(const WinRtActivation&) = delete;
  ~WinRtActivation();

  template <typename Interface>
  HRESULT GetFactory(const wchar_t* className, Microsoft::WRL::ComPtr<Interface>& factory) {
    return GetFactory(className, Interface::kIid, reinterpret_cast<void**>(factory.ReleaseAndGetAddressOf()));
  }

 private:
  HRESULT GetFactory(const wchar_t* className, REFIID iid, void** factory);

  CO_MTA_USAGE_COOKIE cookie_ = nullptr;
};

}  // namespace brisolte
