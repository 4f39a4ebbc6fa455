#pragma once

#include <unknwn.h>
#include <wrl/client.h>

namespace brisolte {

/// `object` as an interface of our own declaration, which no compiler knows the identifier of.
template <typename Interface>
HRESULT QueryByIid(IUnknown* object, Microsoft::WRL::ComPtr<Interface>& result) {
  return object->QueryInterface(Interface::kIid, reinterpret_cast<void**>(result.ReleaseAndGetAddressOf()));
}

}  // namespace brisolte
