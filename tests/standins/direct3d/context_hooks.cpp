#include "direct3d/context_hooks.h"

#include <d3d11_4.h>

#include <cstdio>

#include "direct3d/texture_facts.h"
#include "shared/com_object.h"
#include "shared/faults.h"
#include "shared/vtable.h"

namespace brisolte::standins {

namespace {

Slot<HRESULT(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, REFIID, void**)> queryInterface;
Slot<HRESULT(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, ID3D11Resource*, UINT, D3D11_MAP, UINT,
                                 D3D11_MAPPED_SUBRESOURCE*)>
    map;
Slot<void(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, ID3D11Resource*, UINT)> unmap;
Slot<void(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, ID3D11Resource*, UINT, UINT, UINT, UINT, ID3D11Resource*,
                              UINT, const D3D11_BOX*)>
    copySubresourceRegion;
Slot<void(STDMETHODCALLTYPE*)(ID3D11DeviceContext*, ID3D11Resource*, ID3D11Resource*)> copyResource;

void Tell(const char* what) {
  std::fprintf(stderr, "standin: %s\n", what);
  std::fflush(stderr);
}

bool Watched(ID3D11DeviceContext* context, ID3D11Resource* resource) {
  return resource != nullptr && context->GetType() == D3D11_DEVICE_CONTEXT_IMMEDIATE;
}

bool MayCopy(ID3D11DeviceContext* context, ID3D11Resource* destination, ID3D11Resource* source) {
  if (Watched(context, destination) && IsAnyMapped(*destination)) {
    Tell("copy into a resource that is mapped");
    return false;
  }
  if (Watched(context, source) && IsAnyMapped(*source)) {
    Tell("copy from a resource that is mapped");
    return false;
  }
  return true;
}

/// What a query of the context for this interface is called; null for one that never fails by a fault.
const char* ContextQuery(REFIID iid) {
  if (iid == __uuidof(ID3D11VideoContext)) {
    return "QueryVideoContext";
  }
  return iid == __uuidof(ID3D11Multithread) ? "QueryMultithread" : nullptr;
}

HRESULT STDMETHODCALLTYPE QueryInterfaceHook(ID3D11DeviceContext* self, REFIID iid, void** object) {
  const char* call = ContextQuery(iid);
  if (call != nullptr && object != nullptr) {
    if (const auto fault = TakeFault(call)) {
      *object = nullptr;
      return *fault;
    }
  }
  return queryInterface.original()(self, iid, object);
}

HRESULT STDMETHODCALLTYPE MapHook(ID3D11DeviceContext* self, ID3D11Resource* resource, UINT subresource,
                                  D3D11_MAP type, UINT flags, D3D11_MAPPED_SUBRESOURCE* mapped) {
  if (const auto fault = TakeFault("Map")) {
    return *fault;
  }
  if (Watched(self, resource) && IsMapped(*resource, subresource)) {
    Tell("Map of a subresource that is mapped");
    return E_INVALIDARG;
  }
  const HRESULT result = map.original()(self, resource, subresource, type, flags, mapped);
  if (SUCCEEDED(result) && Watched(self, resource)) {
    SetMapped(*resource, subresource, true);
  }
  return result;
}

void STDMETHODCALLTYPE UnmapHook(ID3D11DeviceContext* self, ID3D11Resource* resource, UINT subresource) {
  if (Watched(self, resource)) {
    if (!IsMapped(*resource, subresource)) {
      Tell("Unmap of a subresource that is not mapped");
      return;
    }
    SetMapped(*resource, subresource, false);
  }
  unmap.original()(self, resource, subresource);
}

bool IsDefaultNv12(ID3D11Resource* resource, D3D11_TEXTURE2D_DESC& desc) {
  ComPtr<ID3D11Texture2D> texture;
  if (resource == nullptr ||
      FAILED(resource->QueryInterface(__uuidof(ID3D11Texture2D),
                                      reinterpret_cast<void**>(texture.GetAddressOf())))) {
    return false;
  }
  texture->GetDesc(&desc);
  return desc.Format == DXGI_FORMAT_NV12 && desc.Usage == D3D11_USAGE_DEFAULT;
}

/// Between default NV12 textures Wine copies what the source held some time before. Through a staging texture
/// the picture is the right one. Whether that was done: whole textures of one size only.
bool CopyNv12(ID3D11DeviceContext* context, ID3D11Resource* destination, ID3D11Resource* source) {
  D3D11_TEXTURE2D_DESC from{};
  D3D11_TEXTURE2D_DESC to{};
  if (!IsDefaultNv12(source, from) || !IsDefaultNv12(destination, to) || from.Width != to.Width ||
      from.Height != to.Height) {
    return false;
  }
  from.Usage = D3D11_USAGE_STAGING;
  from.BindFlags = 0;
  from.MiscFlags = 0;
  from.CPUAccessFlags = D3D11_CPU_ACCESS_READ | D3D11_CPU_ACCESS_WRITE;
  ComPtr<ID3D11Device> device;
  ComPtr<ID3D11Texture2D> staging;
  context->GetDevice(device.GetAddressOf());
  TurnFaults(false);
  const HRESULT made = device->CreateTexture2D(&from, nullptr, staging.GetAddressOf());
  TurnFaults(true);
  if (FAILED(made)) {
    return false;
  }
  copyResource.original()(context, staging.Get(), source);
  copyResource.original()(context, destination, staging.Get());
  return true;
}

void STDMETHODCALLTYPE CopySubresourceRegionHook(ID3D11DeviceContext* self, ID3D11Resource* destination,
                                                 UINT destinationSubresource, UINT x, UINT y, UINT z,
                                                 ID3D11Resource* source, UINT sourceSubresource,
                                                 const D3D11_BOX* box) {
  if (!MayCopy(self, destination, source)) {
    return;
  }
  const bool whole = x == 0 && y == 0 && z == 0 && box == nullptr;
  if (!whole || !CopyNv12(self, destination, source)) {
    copySubresourceRegion.original()(self, destination, destinationSubresource, x, y, z, source,
                                     sourceSubresource, box);
  }
}

void STDMETHODCALLTYPE CopyResourceHook(ID3D11DeviceContext* self, ID3D11Resource* destination,
                                        ID3D11Resource* source) {
  if (MayCopy(self, destination, source) && !CopyNv12(self, destination, source)) {
    copyResource.original()(self, destination, source);
  }
}

}  // namespace

void HookContext(ID3D11DeviceContext& context) {
  queryInterface.Replace(&context, 0, QueryInterfaceHook);
  map.Replace(&context, 14, MapHook);
  unmap.Replace(&context, 15, UnmapHook);
  copySubresourceRegion.Replace(&context, 46, CopySubresourceRegionHook);
  copyResource.Replace(&context, 47, CopyResourceHook);
}

}  // namespace brisolte::standins
