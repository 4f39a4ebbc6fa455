#include "shared/winrt_direct3d.h"

#include <dxgi1_3.h>

#include <mutex>

#include "shared/faults.h"

namespace brisolte::standins {

namespace {

/// The object that a wrapper holds until it is closed.
template <typename Wrapped>
class Holder {
 public:
  explicit Holder(ComPtr<Wrapped> object) : object_(std::move(object)) {}

  ComPtr<Wrapped> Get() const {
    const std::lock_guard lock(mutex_);
    return object_;
  }

  void Close() {
    ComPtr<Wrapped> closed;
    const std::lock_guard lock(mutex_);
    closed.Swap(object_);
  }

 private:
  mutable std::mutex mutex_;
  ComPtr<Wrapped> object_;
};

class WinrtDevice final
    : public InspectableObject<abi::IDirect3DDevice, abi::IDirect3DDxgiInterfaceAccess, abi::IClosable> {
 public:
  explicit WinrtDevice(ComPtr<IDXGIDevice> device)
      : InspectableObject(L"Windows.Graphics.DirectX.Direct3D11.Direct3DDevice"),
        device_(std::move(device)) {}

  HRESULT STDMETHODCALLTYPE Trim() override {
    const auto device = device_.Get();
    ComPtr<IDXGIDevice3> trimmable;
    if (device != nullptr && SUCCEEDED(device.As(&trimmable))) {
      trimmable->Trim();
    }
    return device != nullptr ? S_OK : kClosed;
  }

  HRESULT STDMETHODCALLTYPE GetInterface(REFIID iid, void** object) override {
    const auto device = device_.Get();
    return device != nullptr ? device->QueryInterface(iid, object) : kClosed;
  }

  HRESULT STDMETHODCALLTYPE Close() override {
    device_.Close();
    return S_OK;
  }

 private:
  Holder<IDXGIDevice> device_;
};

class WinrtSurface final
    : public InspectableObject<abi::IDirect3DSurface, abi::IDirect3DDxgiInterfaceAccess, abi::IClosable> {
 public:
  explicit WinrtSurface(ComPtr<IDXGISurface> surface)
      : InspectableObject(L"Windows.Graphics.DirectX.Direct3D11.Direct3DSurface"),
        surface_(std::move(surface)) {}

  HRESULT STDMETHODCALLTYPE get_Description(abi::Direct3DSurfaceDescription* description) override {
    if (description == nullptr) {
      return E_POINTER;
    }
    const auto surface = surface_.Get();
    DXGI_SURFACE_DESC desc{};
    const HRESULT read = surface != nullptr ? surface->GetDesc(&desc) : kClosed;
    if (SUCCEEDED(read)) {
      *description = {
          static_cast<INT32>(desc.Width),
          static_cast<INT32>(desc.Height),
          static_cast<abi::DirectXPixelFormat>(desc.Format),
          {static_cast<INT32>(desc.SampleDesc.Count), static_cast<INT32>(desc.SampleDesc.Quality)}};
    }
    return read;
  }

  HRESULT STDMETHODCALLTYPE GetInterface(REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    const bool texture = iid == __uuidof(ID3D11Texture2D);
    if (const auto fault = TakeFault(texture ? "GetTexture2D" : "GetDxgiSurface", "GetInterface")) {
      return *fault;
    }
    const auto surface = surface_.Get();
    return surface != nullptr ? surface->QueryInterface(iid, object) : kClosed;
  }

  HRESULT STDMETHODCALLTYPE Close() override {
    surface_.Close();
    return S_OK;
  }

 protected:
  std::optional<HRESULT> RefuseQuery(REFIID iid) override {
    return iid == abi::IDirect3DDxgiInterfaceAccess::kIid ? TakeFault("GetInterfaceAccess") : std::nullopt;
  }

 private:
  Holder<IDXGISurface> surface_;
};

}  // namespace

ComPtr<abi::IDirect3DDevice> WrapDevice(ComPtr<IDXGIDevice> device) {
  return Make<WinrtDevice>(std::move(device));
}

ComPtr<abi::IDirect3DSurface> WrapSurface(ComPtr<IDXGISurface> surface) {
  return Make<WinrtSurface>(std::move(surface));
}

ComPtr<ID3D11Device> UnwrapDevice(abi::IDirect3DDevice* device) {
  ComPtr<abi::IDirect3DDxgiInterfaceAccess> access;
  ComPtr<ID3D11Device> inner;
  if (device != nullptr &&
      SUCCEEDED(device->QueryInterface(abi::IDirect3DDxgiInterfaceAccess::kIid,
                                       reinterpret_cast<void**>(access.GetAddressOf())))) {
    access->GetInterface(__uuidof(ID3D11Device), reinterpret_cast<void**>(inner.GetAddressOf()));
  }
  return inner;
}

}  // namespace brisolte::standins
