#pragma once

#include <unknwn.h>
#include <wrl/client.h>

#include "common/given_object.h"
#include "video/graphics_capture_abi.h"

namespace brisolte {

/// `object` as an interface of our own declaration, which no compiler knows the identifier of.
template <typename Interface>
HRESULT QueryByIid(IUnknown* object, Microsoft::WRL::ComPtr<Interface>& result) {
  return object->QueryInterface(Interface::kIid, reinterpret_cast<void**>(result.ReleaseAndGetAddressOf()));
}

/// The object of Direct3D behind an object of the service, which is never null when it succeeds.
template <typename Interface>
HRESULT GetBehind(abi::IDirect3DDxgiInterfaceAccess& access, Microsoft::WRL::ComPtr<Interface>& result) {
  return Given(
      access.GetInterface(__uuidof(Interface), reinterpret_cast<void**>(result.ReleaseAndGetAddressOf())),
      result);
}

}  // namespace brisolte
