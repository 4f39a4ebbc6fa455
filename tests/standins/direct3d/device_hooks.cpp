#include "direct3d/device_hooks.h"

#include <dxgi.h>

#include <mutex>

#include "direct3d/context_hooks.h"
#include "direct3d/texture_facts.h"
#include "direct3d/video_hooks.h"
#include "shared/com_object.h"
#include "shared/faults.h"
#include "shared/vtable.h"

namespace brisolte::standins {

namespace {

std::mutex hooking;

Slot<HRESULT(STDMETHODCALLTYPE*)(ID3D11Device*, REFIID, void**)> queryInterface;
Slot<HRESULT(STDMETHODCALLTYPE*)(ID3D11Device*, const D3D11_TEXTURE2D_DESC*, const D3D11_SUBRESOURCE_DATA*,
                                 ID3D11Texture2D**)>
    createTexture2D;
Slot<HRESULT(STDMETHODCALLTYPE*)(ID3D11Device*)> getDeviceRemovedReason;
Slot<void(STDMETHODCALLTYPE*)(ID3D11Texture2D*, D3D11_TEXTURE2D_DESC*)> textureDesc;
Slot<HRESULT(STDMETHODCALLTYPE*)(IDXGISurface*, DXGI_SURFACE_DESC*)> surfaceDesc;
Slot<HRESULT(STDMETHODCALLTYPE*)(IDXGISurface*, REFIID, void**)> surfaceQuery;

/// What a query of the device for this interface is called; null for one that never fails by a fault.
const char* DeviceQuery(REFIID iid) {
  if (iid == __uuidof(ID3D11VideoDevice)) {
    return "QueryVideoDevice";
  }
  return iid == __uuidof(IDXGIDevice) ? "QueryDxgiDevice" : nullptr;
}

HRESULT STDMETHODCALLTYPE QueryInterfaceHook(ID3D11Device* self, REFIID iid, void** object) {
  const char* call = DeviceQuery(iid);
  if (call != nullptr && object != nullptr) {
    if (const auto fault = TakeFault(call)) {
      *object = nullptr;
      return *fault;
    }
  }
  return queryInterface.original()(self, iid, object);
}

void STDMETHODCALLTYPE TextureDescHook(ID3D11Texture2D* self, D3D11_TEXTURE2D_DESC* desc) {
  textureDesc.original()(self, desc);
  if (const auto asked = AskedFlagsOf(*self)) {
    desc->BindFlags = asked->bind;
    desc->MiscFlags = asked->misc;
  }
}

HRESULT STDMETHODCALLTYPE SurfaceDescHook(IDXGISurface* self, DXGI_SURFACE_DESC* desc) {
  if (const auto fault = TakeFault("GetSurfaceDesc")) {
    return *fault;
  }
  return surfaceDesc.original()(self, desc);
}

HRESULT STDMETHODCALLTYPE SurfaceQueryHook(IDXGISurface* self, REFIID iid, void** object) {
  if (iid == __uuidof(ID3D11Texture2D) && object != nullptr) {
    if (const auto fault = TakeFault("QueryTexture")) {
      *object = nullptr;
      return *fault;
    }
  }
  return surfaceQuery.original()(self, iid, object);
}

void HookTexture(ID3D11Texture2D& texture) {
  const std::lock_guard lock(hooking);
  textureDesc.Replace(&texture, 10, TextureDescHook);
  ComPtr<IDXGISurface> surface;
  if (SUCCEEDED(
          texture.QueryInterface(__uuidof(IDXGISurface), reinterpret_cast<void**>(surface.GetAddressOf())))) {
    surfaceQuery.Replace(surface.Get(), 0, SurfaceQueryHook);
    surfaceDesc.Replace(surface.Get(), 8, SurfaceDescHook);
  }
}

const char* TextureCall(const D3D11_TEXTURE2D_DESC& desc) {
  if ((desc.MiscFlags & D3D11_RESOURCE_MISC_SHARED) != 0) {
    return "CreateSharedTexture";
  }
  return desc.Usage == D3D11_USAGE_STAGING ? "CreateStagingTexture" : "CreateDefaultTexture";
}

HRESULT STDMETHODCALLTYPE CreateTexture2DHook(ID3D11Device* self, const D3D11_TEXTURE2D_DESC* asked,
                                              const D3D11_SUBRESOURCE_DATA* data, ID3D11Texture2D** texture) {
  if (asked == nullptr) {
    return E_INVALIDARG;
  }
  if (const auto fault = TakeFault(TextureCall(*asked), "CreateTexture2D")) {
    return *fault;
  }
  const bool nv12 = asked->Format == DXGI_FORMAT_NV12;
  if (nv12 && (asked->Width % 2 != 0 || asked->Height % 2 != 0)) {
    return E_INVALIDARG;
  }
  D3D11_TEXTURE2D_DESC made = *asked;
  const bool plain = nv12 && asked->Usage == D3D11_USAGE_DEFAULT;
  if (plain) {
    made.BindFlags = 0;
    made.MiscFlags &= ~static_cast<UINT>(D3D11_RESOURCE_MISC_SHARED);
  }
  const HRESULT result = createTexture2D.original()(self, &made, data, texture);
  if (result == S_OK && texture != nullptr) {
    HookTexture(**texture);
    if (plain) {
      RememberAskedFlags(**texture, {asked->BindFlags, asked->MiscFlags});
    }
  }
  return result;
}

HRESULT STDMETHODCALLTYPE GetDeviceRemovedReasonHook(ID3D11Device* self) {
  if (const auto fault = TakeFault("GetDeviceRemovedReason")) {
    return *fault;
  }
  return getDeviceRemovedReason.original()(self);
}

}  // namespace

void HookDevice(ID3D11Device& device) {
  const std::lock_guard lock(hooking);
  queryInterface.Replace(&device, 0, QueryInterfaceHook);
  createTexture2D.Replace(&device, 5, CreateTexture2DHook);
  getDeviceRemovedReason.Replace(&device, 39, GetDeviceRemovedReasonHook);

  TurnFaults(false);
  ComPtr<ID3D11DeviceContext> context;
  device.GetImmediateContext(context.GetAddressOf());
  HookContext(*context.Get());
  ComPtr<ID3D11VideoDevice> videoDevice;
  ComPtr<ID3D11VideoContext> videoContext;
  if (SUCCEEDED(device.QueryInterface(__uuidof(ID3D11VideoDevice),
                                      reinterpret_cast<void**>(videoDevice.GetAddressOf()))) &&
      SUCCEEDED(context.As(&videoContext))) {
    HookVideo(*videoDevice.Get(), *videoContext.Get());
  }
  TurnFaults(true);
}

}  // namespace brisolte::standins
