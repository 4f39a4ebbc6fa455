#include "video/graphics_device.h"

#include <d3d11_4.h>

#include <array>
#include <cstdio>

#include "common/given_object.h"
#include "common/logger.h"
#include "common/text.h"
#include "video/query_interface.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

constexpr std::array kFeatureLevels{D3D_FEATURE_LEVEL_11_1, D3D_FEATURE_LEVEL_11_0, D3D_FEATURE_LEVEL_10_1,
                                    D3D_FEATURE_LEVEL_10_0};

using WrapFunction = HRESULT(WINAPI*)(IDXGIDevice*, IInspectable**);

/// Looked up by name because systems before the capture service lack it, and the module must load there all
/// the same.
WrapFunction FindWrapFunction() {
  const HMODULE direct3d = GetModuleHandleW(L"d3d11.dll");
  if (direct3d == nullptr) {
    return nullptr;
  }
  void* function = reinterpret_cast<void*>(GetProcAddress(direct3d, "CreateDirect3D11DeviceFromDXGIDevice"));
  return reinterpret_cast<WrapFunction>(function);
}

void ProtectContext(const Direct3D& graphics) {
  ComPtr<ID3D11Multithread> threads;
  const HRESULT found = Given(graphics.context.As(&threads), threads);
  if (SUCCEEDED(found)) {
    threads->SetMultithreadProtected(TRUE);
  } else {
    Logger::Warning("D3D11 context is not protected against use by several threads: " + HResultText(found));
  }
}

}  // namespace

HRESULT CreateGraphicsDevice(DriverType type, Direct3D& graphics, D3D_FEATURE_LEVEL& featureLevel) {
  const HRESULT result = D3D11CreateDevice(
      nullptr, static_cast<D3D_DRIVER_TYPE>(type), nullptr, D3D11_CREATE_DEVICE_BGRA_SUPPORT,
      kFeatureLevels.data(), static_cast<UINT>(kFeatureLevels.size()), D3D11_SDK_VERSION,
      graphics.device.ReleaseAndGetAddressOf(), &featureLevel, graphics.context.ReleaseAndGetAddressOf());
  const HRESULT given = Given(Given(result, graphics.device), graphics.context);
  if (SUCCEEDED(given)) {
    ProtectContext(graphics);
  }
  return given;
}

ComPtr<IDXGIDevice> DxgiDeviceOf(ID3D11Device& device) {
  ComPtr<IDXGIDevice> dxgi;
  device.QueryInterface(__uuidof(IDXGIDevice), reinterpret_cast<void**>(dxgi.GetAddressOf()));
  return dxgi;
}

HRESULT WrapDxgiDevice(IDXGIDevice& dxgi, ComPtr<abi::IDirect3DDevice>& wrapped) {
  wrapped = nullptr;
  WrapFunction wrap = FindWrapFunction();
  if (wrap == nullptr) {
    return E_NOTIMPL;
  }
  ComPtr<IInspectable> inspectable;
  if (const HRESULT result = wrap(&dxgi, inspectable.GetAddressOf()); FAILED(result)) {
    return result;
  }
  return inspectable == nullptr ? E_POINTER : Given(QueryByIid(inspectable.Get(), wrapped), wrapped);
}

std::string AdapterIdentifier(ID3D11Device& device) {
  const ComPtr<IDXGIDevice> dxgi = DxgiDeviceOf(device);
  ComPtr<IDXGIAdapter> adapter;
  DXGI_ADAPTER_DESC description{};
  if (dxgi == nullptr || FAILED(Given(dxgi->GetAdapter(adapter.GetAddressOf()), adapter)) ||
      FAILED(adapter->GetDesc(&description))) {
    return "unknown";
  }
  const LUID id = description.AdapterLuid;
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%08lx-%08lx", static_cast<unsigned long>(id.HighPart),
                static_cast<unsigned long>(id.LowPart));
  return text.data();
}

}  // namespace brisolte
