#pragma once

#include <wrl/client.h>

#include "common/mta_usage.h"

namespace brisolte {

/// Finds the factories of WinRT classes on any thread. What it found is to be used only as long as it lives.
///
/// On a thread without COM it keeps the process's multithreaded apartment alive.
class WinRtActivation {
 public:
  template <typename Interface>
  HRESULT GetFactory(const wchar_t* className, Microsoft::WRL::ComPtr<Interface>& factory) {
    return GetFactory(className, Interface::kIid, reinterpret_cast<void**>(factory.ReleaseAndGetAddressOf()));
  }

 private:
  HRESULT GetFactory(const wchar_t* className, REFIID iid, void** factory);

  MtaUsage apartment_;
};

}  // namespace brisolte
