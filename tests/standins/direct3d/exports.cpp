#include <d3d11.h>
#include <windows.h>

#include "direct3d/device_hooks.h"
#include "shared/faults.h"
#include "shared/path_limit.h"
#include "shared/winrt_direct3d.h"
#include "support/exported_function.h"

namespace brisolte::standins {

namespace {

// Where the Wine runner puts it: this DLL has taken its place.
HMODULE WinesOwn() {
  static const HMODULE kModule = LoadLibraryW(L"C:\\wine\\wine-d3d11.dll");
  return kModule;
}

template <typename Result, typename... Arguments>
Result CallWines(const char* name, Arguments... arguments) {
  using Function = Result(WINAPI*)(Arguments...);
  const auto function = ExportedFunction<Function>(WinesOwn(), name);
  return function != nullptr ? function(arguments...) : static_cast<Result>(E_NOTIMPL);
}

/// Hooks the device that a call has made. Without a device to give there is nothing to hook either.
HRESULT Hooked(HRESULT result, ID3D11Device* const* device) {
  if (SUCCEEDED(result) && device != nullptr && *device != nullptr) {
    HookDevice(**device);
  }
  return result;
}

}  // namespace

}  // namespace brisolte::standins

using namespace brisolte::standins;

extern "C" {

HRESULT WINAPI D3D11CreateDevice(IDXGIAdapter* adapter, D3D_DRIVER_TYPE type, HMODULE software, UINT flags,
                                 const D3D_FEATURE_LEVEL* levels, UINT levelCount, UINT sdk,
                                 ID3D11Device** device, D3D_FEATURE_LEVEL* level,
                                 ID3D11DeviceContext** context) {
  // Every instance of the module makes a device, before any of its paths is looked at.
  LimitPaths();
  if (const auto fault = TakeFault("D3D11CreateDevice")) {
    if (device != nullptr) {
      *device = nullptr;
    }
    if (context != nullptr) {
      *context = nullptr;
    }
    return *fault;
  }
  return Hooked(CallWines<HRESULT>("D3D11CreateDevice", adapter, type, software, flags, levels, levelCount,
                                   sdk, device, level, context),
                device);
}

HRESULT WINAPI D3D11CreateDeviceAndSwapChain(IDXGIAdapter* adapter, D3D_DRIVER_TYPE type, HMODULE software,
                                             UINT flags, const D3D_FEATURE_LEVEL* levels, UINT levelCount,
                                             UINT sdk, const DXGI_SWAP_CHAIN_DESC* swapDesc,
                                             IDXGISwapChain** swapChain, ID3D11Device** device,
                                             D3D_FEATURE_LEVEL* level, ID3D11DeviceContext** context) {
  return Hooked(CallWines<HRESULT>("D3D11CreateDeviceAndSwapChain", adapter, type, software, flags, levels,
                                   levelCount, sdk, swapDesc, swapChain, device, level, context),
                device);
}

// These five are between Wine's dxgi.dll and its d3d11.dll.
HRESULT WINAPI D3D11CoreCreateDevice(void* factory, void* adapter, UINT flags,
                                     const D3D_FEATURE_LEVEL* levels, UINT levelCount, void** device) {
  return CallWines<HRESULT>("D3D11CoreCreateDevice", factory, adapter, flags, levels, levelCount, device);
}

HRESULT WINAPI D3D11CoreCreateLayeredDevice(const void* init, DWORD initSize, const void* args,
                                            const GUID* iid, void** device) {
  return CallWines<HRESULT>("D3D11CoreCreateLayeredDevice", init, initSize, args, iid, device);
}

SIZE_T WINAPI D3D11CoreGetLayeredDeviceSize(const void* init, DWORD initSize) {
  return CallWines<SIZE_T>("D3D11CoreGetLayeredDeviceSize", init, initSize);
}

HRESULT WINAPI D3D11CoreRegisterLayers(const void* layers, DWORD count) {
  return CallWines<HRESULT>("D3D11CoreRegisterLayers", layers, count);
}

HRESULT WINAPI D3D10CoreRegisterLayers(const void* layers, DWORD count) {
  return CallWines<HRESULT>("D3D10CoreRegisterLayers", layers, count);
}

HRESULT WINAPI D3D11On12CreateDevice(IUnknown* device, UINT flags, const D3D_FEATURE_LEVEL* levels,
                                     UINT levelCount, IUnknown** queues, UINT queueCount, UINT nodeMask,
                                     ID3D11Device** device11, ID3D11DeviceContext** context,
                                     D3D_FEATURE_LEVEL* level) {
  return CallWines<HRESULT>("D3D11On12CreateDevice", device, flags, levels, levelCount, queues, queueCount,
                            nodeMask, device11, context, level);
}

HRESULT WINAPI CreateDirect3D11DeviceFromDXGIDevice(IDXGIDevice* inner, IInspectable** device) {
  if (inner == nullptr || device == nullptr) {
    return E_INVALIDARG;
  }
  *device = nullptr;
  if (const auto fault = TakeFault("CreateDirect3D11DeviceFromDXGIDevice")) {
    return *fault;
  }
  return Give<IInspectable>(WrapDevice(inner), device);
}

HRESULT WINAPI CreateDirect3D11SurfaceFromDXGISurface(IDXGISurface* inner, IInspectable** surface) {
  if (inner == nullptr || surface == nullptr) {
    return E_INVALIDARG;
  }
  *surface = nullptr;
  if (const auto fault = TakeFault("CreateDirect3D11SurfaceFromDXGISurface")) {
    return *fault;
  }
  return Give<IInspectable>(WrapSurface(inner), surface);
}

/// Objects of this stand-in that are alive.
long StandinObjectCount() {
  return liveObjects;
}

/// Turns faults off and on again for the calling thread: for another stand-in's own work.
void StandinTurnFaults(bool on) {
  TurnFaults(on);
}
}
