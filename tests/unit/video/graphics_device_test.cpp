#include "video/graphics_device.h"

#include <dxgi.h>
#include <gmock/gmock.h>

#include <array>
#include <cstdio>

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

TEST(GraphicsDevice, IsNamedByItsAdapter) {
  Direct3D direct3d;
  D3D_FEATURE_LEVEL level{};
  ASSERT_EQ(CreateGraphicsDevice(DriverType::kHardware, direct3d, level), S_OK);
  ComPtr<IDXGIFactory> factory;
  ComPtr<IDXGIAdapter> first;
  DXGI_ADAPTER_DESC description{};
  ASSERT_EQ(CreateDXGIFactory(IID_PPV_ARGS(&factory)), S_OK);
  ASSERT_EQ(factory->EnumAdapters(0, &first), S_OK);
  ASSERT_EQ(first->GetDesc(&description), S_OK);
  const auto [low, high] = description.AdapterLuid;
  std::array<char, 32> name{};
  std::snprintf(name.data(), name.size(), "%08lx-%08lx", static_cast<unsigned long>(high), low);
  EXPECT_EQ(AdapterIdentifier(*direct3d.device.Get()), name.data());
  EXPECT_NE(description.AdapterLuid.LowPart, 0U);
}

}  // namespace
}  // namespace brisolte
