#include "video/graphics_capture_abi.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>

namespace brisolte {
namespace {

using Word = std::uintptr_t;

struct Call {
  std::size_t slot = 0;
  std::array<Word, 4> arguments{};
};

Call lastCall;

template <std::size_t kSlot>
HRESULT STDMETHODCALLTYPE Slot(void* /*self*/, Word first, Word second, Word third, Word fourth) {
  lastCall = {kSlot, {first, second, third, fourth}};
  return S_OK;
}

template <std::size_t... kSlots>
constexpr auto MakeTable(std::index_sequence<kSlots...> /*slots*/) {
  return std::array{&Slot<kSlots>...};
}

constexpr auto kTable = MakeTable(std::make_index_sequence<16>());

/// An object of nothing but a table of functions, each of which knows its number.
template <typename Interface>
class Recorder {
 public:
  Recorder() {
    // Copied as bytes: a compiler may not mistake the table for data of another type than the calls read.
    const void* table = static_cast<const void*>(kTable.data());
    std::memcpy(object_.data(), static_cast<const void*>(&table), sizeof(table));
  }

  Interface* operator->() { return reinterpret_cast<Interface*>(start_); }

 private:
  alignas(void*) std::array<std::byte, sizeof(void*)> object_{};
  // Volatile, or it would see through to functions of another type than the ones it calls.
  std::byte* volatile start_ = object_.data();
};

std::string IdentifierText(const IID& iid) {
  std::array<wchar_t, 40> text{};
  StringFromGUID2(iid, text.data(), static_cast<int>(text.size()));
  std::string narrow;
  for (const wchar_t* c = text.data(); *c != 0; ++c) {
    narrow += static_cast<char>(*c);
  }
  return narrow;
}

#define EXPECT_SLOT(expected, call)     \
  do {                                  \
    lastCall = {};                      \
    EXPECT_EQ((call), S_OK);            \
    EXPECT_EQ(lastCall.slot, expected); \
  } while (false)

TEST(CaptureAbi, HasThePlatformsIdentifiers) {
  EXPECT_EQ(IdentifierText(abi::IGraphicsCaptureItemInterop::kIid), "{3628E81B-3CAC-4C60-B7F4-23CE0E0C3356}");
  EXPECT_EQ(IdentifierText(abi::IGraphicsCaptureItem::kIid), "{79C3F95B-31F7-4EC2-A464-632EF5D30760}");
  EXPECT_EQ(IdentifierText(abi::IDirect3D11CaptureFramePoolStatics::kIid),
            "{7784056A-67AA-4D53-AE54-1088D5A8CA21}");
  EXPECT_EQ(IdentifierText(abi::IDirect3D11CaptureFramePoolStatics2::kIid),
            "{589B103F-6BBC-5DF5-A991-02E28B3B66D5}");
  EXPECT_EQ(IdentifierText(abi::IDirect3D11CaptureFramePool::kIid), "{24EB6D22-1975-422E-82E7-780DBD8DDF24}");
  EXPECT_EQ(IdentifierText(abi::IDirect3D11CaptureFrame::kIid), "{FA50C623-38DA-4B32-ACF3-FA9734AD800E}");
  EXPECT_EQ(IdentifierText(abi::IGraphicsCaptureSession::kIid), "{814E42A9-F70F-4AD7-939B-FDDCC6EB880D}");
  EXPECT_EQ(IdentifierText(abi::IGraphicsCaptureSession2::kIid), "{2C39AE40-7D2E-5044-804E-8B6799D4CF9E}");
  EXPECT_EQ(IdentifierText(abi::IGraphicsCaptureSession3::kIid), "{F2CDD966-22AE-5EA1-9596-3A289344C3BE}");
  EXPECT_EQ(IdentifierText(abi::IFrameArrivedHandler::kIid), "{51A947F7-79CF-5A3E-A3A5-1289CFA6DFE8}");
  EXPECT_EQ(IdentifierText(abi::IDirect3DDevice::kIid), "{A37624AB-8D5F-4650-9D3E-9EAE3D9BC670}");
  EXPECT_EQ(IdentifierText(abi::IDirect3DSurface::kIid), "{0BF4A146-13C1-4694-BEE3-7ABF15EAF586}");
  EXPECT_EQ(IdentifierText(abi::IDirect3DDxgiInterfaceAccess::kIid),
            "{A9B3D012-3DF2-4EE3-B8D1-8695F457D3C1}");
  EXPECT_EQ(IdentifierText(abi::IClosable::kIid), "{30D5A829-7FA4-4026-83BB-D75BAE4EA99E}");
  EXPECT_EQ(IdentifierText(abi::IAgileObject::kIid), "{94EA2B94-E9CC-49E0-C0FF-EE64CA8F5B90}");
}

TEST(CaptureAbi, HasThePlatformsNamesAndNumbers) {
  EXPECT_STREQ(abi::kGraphicsCaptureItemClass, L"Windows.Graphics.Capture.GraphicsCaptureItem");
  EXPECT_STREQ(abi::kFramePoolClass, L"Windows.Graphics.Capture.Direct3D11CaptureFramePool");
  EXPECT_EQ(static_cast<int>(abi::DirectXPixelFormat::B8G8R8A8UIntNormalized), 87);
  EXPECT_EQ(sizeof(abi::SizeInt32), 8U);
  EXPECT_EQ(sizeof(abi::TimeSpan), 8U);
  EXPECT_EQ(sizeof(abi::EventRegistrationToken), 8U);
  EXPECT_EQ(sizeof(boolean), 1U);
  EXPECT_EQ(sizeof(abi::Direct3DSurfaceDescription), 20U);
}

TEST(CaptureAbi, HasTheItemsSlots) {
  Recorder<abi::IGraphicsCaptureItemInterop> interop;
  EXPECT_SLOT(3U, interop->CreateForWindow(nullptr, IID_IUnknown, nullptr));
  EXPECT_SLOT(4U, interop->CreateForMonitor(nullptr, IID_IUnknown, nullptr));
  Recorder<abi::IGraphicsCaptureItem> item;
  EXPECT_SLOT(6U, item->get_DisplayName(nullptr));
  EXPECT_SLOT(7U, item->get_Size(nullptr));
  EXPECT_SLOT(8U, item->add_Closed(nullptr, nullptr));
  EXPECT_SLOT(9U, item->remove_Closed({42}));
  EXPECT_EQ(lastCall.arguments[0], 42U);
}

TEST(CaptureAbi, HasTheFramePoolsSlots) {
  const auto format = abi::DirectXPixelFormat::B8G8R8A8UIntNormalized;
  Recorder<abi::IDirect3D11CaptureFramePoolStatics> statics;
  EXPECT_SLOT(6U, statics->Create(nullptr, format, 2, {3, 4}, nullptr));
  Recorder<abi::IDirect3D11CaptureFramePoolStatics2> statics2;
  EXPECT_SLOT(6U, statics2->CreateFreeThreaded(nullptr, format, 2, {3, 4}, nullptr));
  EXPECT_EQ(lastCall.arguments[3], (Word{4} << 32) + 3) << "a size is passed by value";
  Recorder<abi::IDirect3D11CaptureFramePool> pool;
  EXPECT_SLOT(6U, pool->Recreate(nullptr, format, 2, {3, 4}));
  EXPECT_SLOT(7U, pool->TryGetNextFrame(nullptr));
  EXPECT_SLOT(8U, pool->add_FrameArrived(nullptr, nullptr));
  EXPECT_SLOT(9U, pool->remove_FrameArrived({42}));
  EXPECT_EQ(lastCall.arguments[0], 42U) << "a token is passed by value";
  EXPECT_SLOT(10U, pool->CreateCaptureSession(nullptr, nullptr));
  EXPECT_SLOT(11U, pool->get_DispatcherQueue(nullptr));
}

TEST(CaptureAbi, HasTheOtherObjectsSlots) {
  Recorder<abi::IDirect3D11CaptureFrame> frame;
  EXPECT_SLOT(6U, frame->get_Surface(nullptr));
  EXPECT_SLOT(7U, frame->get_SystemRelativeTime(nullptr));
  EXPECT_SLOT(8U, frame->get_ContentSize(nullptr));
  Recorder<abi::IGraphicsCaptureSession> session;
  EXPECT_SLOT(6U, session->StartCapture());
  Recorder<abi::IGraphicsCaptureSession2> session2;
  EXPECT_SLOT(6U, session2->get_IsCursorCaptureEnabled(nullptr));
  EXPECT_SLOT(7U, session2->put_IsCursorCaptureEnabled(1));
  EXPECT_EQ(lastCall.arguments[0] & 0xFFU, 1U);
  Recorder<abi::IGraphicsCaptureSession3> session3;
  EXPECT_SLOT(6U, session3->get_IsBorderRequired(nullptr));
  EXPECT_SLOT(7U, session3->put_IsBorderRequired(1));
  Recorder<abi::IFrameArrivedHandler> handler;
  EXPECT_SLOT(3U, handler->Invoke(nullptr, nullptr));
  Recorder<abi::IDirect3DDevice> device;
  EXPECT_SLOT(6U, device->Trim());
  Recorder<abi::IDirect3DSurface> surface;
  EXPECT_SLOT(6U, surface->get_Description(nullptr));
  Recorder<abi::IDirect3DDxgiInterfaceAccess> access;
  EXPECT_SLOT(3U, access->GetInterface(IID_IUnknown, nullptr));
  Recorder<abi::IClosable> closable;
  EXPECT_SLOT(6U, closable->Close());
}

TEST(CaptureAbi, DerivesFromInspectableObjects) {
  Recorder<abi::IClosable> object;
  EXPECT_SLOT(0U, object->QueryInterface(IID_IUnknown, nullptr));
  EXPECT_SLOT(3U, object->GetIids(nullptr, nullptr));
  EXPECT_SLOT(4U, object->GetRuntimeClassName(nullptr));
  EXPECT_SLOT(5U, object->GetTrustLevel(nullptr));
}

}  // namespace
}  // namespace brisolte
