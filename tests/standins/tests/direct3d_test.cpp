#include <gtest/gtest.h>

#include <cstring>

#include "shared/com_object.h"
#include "support/exported_function.h"
#include "tests/service.h"

namespace brisolte::standins {

namespace {

template <typename Interface>
void** Out(ComPtr<Interface>& pointer) {
  return reinterpret_cast<void**>(pointer.ReleaseAndGetAddressOf());
}

constexpr UINT kTarget = D3D11_BIND_RENDER_TARGET | D3D11_BIND_SHADER_RESOURCE;

ComPtr<ID3D11Texture2D> MakeTexture(const Device& device, D3D11_TEXTURE2D_DESC desc,
                                    const void* pixels = nullptr) {
  const D3D11_SUBRESOURCE_DATA data{pixels, desc.Width * 4, 0};
  ComPtr<ID3D11Texture2D> texture;
  device.device->CreateTexture2D(&desc, pixels != nullptr ? &data : nullptr, texture.GetAddressOf());
  return texture;
}

D3D11_TEXTURE2D_DESC Desc(DXGI_FORMAT format, UINT width, UINT height, UINT bind = kTarget, UINT misc = 0) {
  return {width, height, 1, 1, format, {1, 0}, D3D11_USAGE_DEFAULT, bind, 0, misc};
}

D3D11_TEXTURE2D_DESC StagingDesc(DXGI_FORMAT format, UINT width, UINT height) {
  return {width, height, 1, 1, format, {1, 0}, D3D11_USAGE_STAGING, 0, D3D11_CPU_ACCESS_READ, 0};
}

TEST(WinrtDevice, LeadsToTheDeviceItWrapsUntilItIsClosed) {
  const auto device = MakeDevice();
  ComPtr<abi::IDirect3DDxgiInterfaceAccess> access;
  ComPtr<ID3D11Device> inner;
  ComPtr<abi::IAgileObject> agile;
  HSTRING name = nullptr;
  ASSERT_EQ(device.winrt->QueryInterface(abi::IDirect3DDxgiInterfaceAccess::kIid, Out(access)), S_OK);
  ASSERT_EQ(access->GetInterface(__uuidof(ID3D11Device), Out(inner)), S_OK);
  EXPECT_EQ(inner, device.device);
  EXPECT_EQ(device.winrt->QueryInterface(abi::IAgileObject::kIid, Out(agile)), S_OK);
  EXPECT_EQ(device.winrt->GetRuntimeClassName(&name), S_OK);
  EXPECT_STREQ(WindowsGetStringRawBuffer(name, nullptr),
               L"Windows.Graphics.DirectX.Direct3D11.Direct3DDevice");
  WindowsDeleteString(name);
  EXPECT_EQ(device.winrt->Trim(), S_OK);

  EXPECT_EQ(Close(device.winrt.Get()), S_OK);
  EXPECT_EQ(device.winrt->Trim(), kClosed);
  EXPECT_EQ(access->GetInterface(__uuidof(ID3D11Device), Out(inner)), kClosed);
}

TEST(WinrtSurface, LeadsToTheSurfaceItWraps) {
  const auto device = MakeDevice();
  const auto texture = MakeTexture(device, Desc(DXGI_FORMAT_B8G8R8A8_UNORM, 30, 20));
  ComPtr<IDXGISurface> inner;
  ASSERT_EQ(texture.As(&inner), S_OK);
  using Wrap = HRESULT(WINAPI*)(IDXGISurface*, IInspectable**);
  const auto wrap =
      ExportedFunction<Wrap>(GetModuleHandleW(L"d3d11.dll"), "CreateDirect3D11SurfaceFromDXGISurface");
  ComPtr<IInspectable> wrapped;
  ComPtr<abi::IDirect3DSurface> surface;
  ComPtr<abi::IDirect3DDxgiInterfaceAccess> access;
  ComPtr<ID3D11Texture2D> found;
  abi::Direct3DSurfaceDescription description{};
  EXPECT_EQ(wrap(nullptr, wrapped.GetAddressOf()), E_INVALIDARG);
  ASSERT_EQ(wrap(inner.Get(), wrapped.GetAddressOf()), S_OK);
  ASSERT_EQ(wrapped->QueryInterface(abi::IDirect3DSurface::kIid, Out(surface)), S_OK);
  ASSERT_EQ(surface->get_Description(&description), S_OK);
  EXPECT_EQ(description.Width, 30);
  EXPECT_EQ(description.Height, 20);
  EXPECT_EQ(description.Format, abi::DirectXPixelFormat::B8G8R8A8UIntNormalized);
  ASSERT_EQ(surface->QueryInterface(abi::IDirect3DDxgiInterfaceAccess::kIid, Out(access)), S_OK);
  ASSERT_EQ(access->GetInterface(__uuidof(ID3D11Texture2D), Out(found)), S_OK);
  EXPECT_EQ(found, texture);
}

TEST(Nv12Texture, CanBeASharedRenderTarget) {
  const auto device = MakeDevice();
  const auto asked = Desc(DXGI_FORMAT_NV12, 64, 32, kTarget, D3D11_RESOURCE_MISC_SHARED);
  const auto texture = MakeTexture(device, asked);
  ASSERT_NE(texture, nullptr);
  D3D11_TEXTURE2D_DESC desc{};
  texture->GetDesc(&desc);
  EXPECT_EQ(desc.BindFlags, kTarget);
  EXPECT_EQ(desc.MiscFlags, static_cast<UINT>(D3D11_RESOURCE_MISC_SHARED));
  EXPECT_EQ(desc.Format, DXGI_FORMAT_NV12);
  EXPECT_EQ(desc.Width, 64U);
}

TEST(Nv12Texture, HasAnEvenSize) {
  const auto device = MakeDevice();
  auto desc = Desc(DXGI_FORMAT_NV12, 63, 32);
  ComPtr<ID3D11Texture2D> texture;
  EXPECT_EQ(device.device->CreateTexture2D(&desc, nullptr, texture.GetAddressOf()), E_INVALIDARG);
  desc.Width = 64;
  desc.Height = 31;
  EXPECT_EQ(device.device->CreateTexture2D(&desc, nullptr, texture.GetAddressOf()), E_INVALIDARG);
}

/// A staging texture with this byte all over.
ComPtr<ID3D11Texture2D> FilledStaging(const Device& device, int byte) {
  auto desc = StagingDesc(DXGI_FORMAT_NV12, 8, 4);
  desc.CPUAccessFlags = D3D11_CPU_ACCESS_READ | D3D11_CPU_ACCESS_WRITE;
  const auto texture = MakeTexture(device, desc);
  D3D11_MAPPED_SUBRESOURCE mapped{};
  EXPECT_EQ(device.context->Map(texture.Get(), 0, D3D11_MAP_WRITE, 0, &mapped), S_OK);
  std::memset(mapped.pData, byte, std::size_t{mapped.RowPitch} * 6);
  device.context->Unmap(texture.Get(), 0);
  return texture;
}

/// The last byte of a texture's picture, which is one of colour.
int LastByte(const Device& device, ID3D11Texture2D* texture) {
  const auto staging = FilledStaging(device, 0);
  device.context->CopyResource(staging.Get(), texture);
  D3D11_MAPPED_SUBRESOURCE mapped{};
  EXPECT_EQ(device.context->Map(staging.Get(), 0, D3D11_MAP_READ, 0, &mapped), S_OK);
  const int last = static_cast<const unsigned char*>(mapped.pData)[std::size_t{mapped.RowPitch} * 5 + 7];
  device.context->Unmap(staging.Get(), 0);
  return last;
}

TEST(Nv12Texture, IsCopiedAsItIsAtTheCopy) {
  const auto device = MakeDevice();
  const auto shared = MakeTexture(device, Desc(DXGI_FORMAT_NV12, 8, 4, kTarget, D3D11_RESOURCE_MISC_SHARED));
  const auto first = MakeTexture(device, Desc(DXGI_FORMAT_NV12, 8, 4));
  const auto second = MakeTexture(device, Desc(DXGI_FORMAT_NV12, 8, 4));
  device.context->CopyResource(shared.Get(), FilledStaging(device, 10).Get());
  device.context->CopySubresourceRegion(first.Get(), 0, 0, 0, 0, shared.Get(), 0, nullptr);
  device.context->CopyResource(shared.Get(), FilledStaging(device, 20).Get());
  device.context->CopyResource(second.Get(), shared.Get());
  device.context->CopyResource(shared.Get(), FilledStaging(device, 30).Get());
  EXPECT_EQ(LastByte(device, first.Get()), 10);
  EXPECT_EQ(LastByte(device, second.Get()), 20);
  EXPECT_EQ(LastByte(device, shared.Get()), 30);
}

TEST(CallChecker, RefusesToMapTwice) {
  const auto device = MakeDevice();
  const auto texture = MakeTexture(device, StagingDesc(DXGI_FORMAT_B8G8R8A8_UNORM, 8, 8));
  D3D11_MAPPED_SUBRESOURCE mapped{};
  ASSERT_EQ(device.context->Map(texture.Get(), 0, D3D11_MAP_READ, 0, &mapped), S_OK);
  testing::internal::CaptureStderr();
  EXPECT_EQ(device.context->Map(texture.Get(), 0, D3D11_MAP_READ, 0, &mapped), E_INVALIDARG);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "standin: Map of a subresource that is mapped\n");
  device.context->Unmap(texture.Get(), 0);
  EXPECT_EQ(device.context->Map(texture.Get(), 0, D3D11_MAP_READ, 0, &mapped), S_OK);
  device.context->Unmap(texture.Get(), 0);

  testing::internal::CaptureStderr();
  device.context->Unmap(texture.Get(), 0);
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "standin: Unmap of a subresource that is not mapped\n");
}

TEST(CallChecker, TellsOfCopiesThatMeetAMapping) {
  const auto device = MakeDevice();
  const auto texture = MakeTexture(device, StagingDesc(DXGI_FORMAT_B8G8R8A8_UNORM, 8, 8));
  const auto other = MakeTexture(device, Desc(DXGI_FORMAT_B8G8R8A8_UNORM, 8, 8));
  D3D11_MAPPED_SUBRESOURCE mapped{};
  ASSERT_EQ(device.context->Map(texture.Get(), 0, D3D11_MAP_READ, 0, &mapped), S_OK);
  testing::internal::CaptureStderr();
  device.context->CopyResource(texture.Get(), other.Get());
  device.context->CopySubresourceRegion(other.Get(), 0, 0, 0, 0, texture.Get(), 0, nullptr);
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "standin: copy into a resource that is mapped\nstandin: copy from a resource that is mapped\n");
  device.context->Unmap(texture.Get(), 0);
}

TEST(Faults, ReachEveryDeviceCall) {
  const auto device = MakeDevice();
  ComPtr<IUnknown> object;
  ComPtr<ID3D11Texture2D> texture;
  const auto staging = StagingDesc(DXGI_FORMAT_B8G8R8A8_UNORM, 8, 8);
  const auto shared = Desc(DXGI_FORMAT_NV12, 8, 8, kTarget, D3D11_RESOURCE_MISC_SHARED);
  const auto made = MakeTexture(device, staging);
  ComPtr<IDXGISurface> surface;
  ASSERT_EQ(MakeTexture(device, Desc(DXGI_FORMAT_B8G8R8A8_UNORM, 8, 8)).As(&surface), S_OK);
  D3D11_MAPPED_SUBRESOURCE mapped{};
  DXGI_SURFACE_DESC desc{};
  ComPtr<IDXGIDevice> dxgi;
  ASSERT_EQ(device.device.As(&dxgi), S_OK);
  const Faults faults(
      "D3D11CreateDevice 0x80004005\nQueryVideoDevice 0x80004005\nQueryDxgiDevice 0x80004005\n"
      "QueryVideoContext 0x80004005\nCreateSharedTexture 0x80004005\nCreateStagingTexture 0x80004005 times "
      "1\n"
      "CreateTexture2D 0x8007000E\nMap 0x80004005\nGetSurfaceDesc 0x80004005\n");
  EXPECT_EQ(D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, 0, nullptr, 0, D3D11_SDK_VERSION,
                              nullptr, nullptr, nullptr),
            E_FAIL);
  EXPECT_EQ(device.device->QueryInterface(__uuidof(ID3D11VideoDevice), Out(object)), E_FAIL);
  EXPECT_EQ(device.device->QueryInterface(__uuidof(IDXGIDevice), Out(object)), E_FAIL);
  EXPECT_EQ(device.context->QueryInterface(__uuidof(ID3D11VideoContext), Out(object)), E_FAIL);
  EXPECT_EQ(device.device->CreateTexture2D(&shared, nullptr, texture.GetAddressOf()), E_FAIL);
  EXPECT_EQ(device.device->CreateTexture2D(&staging, nullptr, texture.GetAddressOf()), E_FAIL);
  EXPECT_EQ(device.device->CreateTexture2D(&staging, nullptr, texture.GetAddressOf()), E_OUTOFMEMORY);
  EXPECT_EQ(device.context->Map(made.Get(), 0, D3D11_MAP_READ, 0, &mapped), E_FAIL);
  EXPECT_EQ(surface->GetDesc(&desc), E_FAIL);
}

}  // namespace

}  // namespace brisolte::standins
