#include "video/frame_arrived_handler.h"

#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>

#include "common/ref_counted.h"
#include "video/query_interface.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

/// A pool that nobody calls.
class Pool final : public RefCounted<abi::IDirect3D11CaptureFramePool> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID /*iid*/, void** object) override {
    return Answer(false, object);
  }
  HRESULT STDMETHODCALLTYPE GetIids(ULONG* /*count*/, IID** /*iids*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetRuntimeClassName(HSTRING* /*name*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetTrustLevel(TrustLevel* /*level*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Recreate(abi::IDirect3DDevice* /*device*/, abi::DirectXPixelFormat /*format*/,
                                     INT32 /*buffers*/, abi::SizeInt32 /*size*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE TryGetNextFrame(abi::IDirect3D11CaptureFrame** /*frame*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE add_FrameArrived(abi::IFrameArrivedHandler* /*handler*/,
                                             abi::EventRegistrationToken* /*token*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE remove_FrameArrived(abi::EventRegistrationToken /*token*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE CreateCaptureSession(abi::IGraphicsCaptureItem* /*item*/,
                                                 abi::IGraphicsCaptureSession** /*session*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_DispatcherQueue(IUnknown** /*queue*/) override { return E_NOTIMPL; }
};

constexpr auto kNothing = [](abi::IDirect3D11CaptureFramePool& /*pool*/) { return S_OK; };

TEST(FrameArrivedHandler, LendsThePoolAndPassesResultsOn) {
  Pool pool;
  int calls = 0;
  const auto handler = MakeFrameArrivedHandler([&](abi::IDirect3D11CaptureFramePool& lent) {
    EXPECT_EQ(&lent, &pool);
    return ++calls == 1 ? S_OK : E_ABORT;
  });
  EXPECT_EQ(handler->Invoke(&pool, nullptr), S_OK);
  EXPECT_EQ(handler->Invoke(&pool, nullptr), E_ABORT);
}

TEST(FrameArrivedHandler, LetsNoExceptionOut) {
  Pool pool;
  const auto handler = MakeFrameArrivedHandler(
      [](abi::IDirect3D11CaptureFramePool& /*lent*/) -> HRESULT { throw std::runtime_error("broke"); });
  EXPECT_EQ(handler->Invoke(&pool, nullptr), E_FAIL);
}

TEST(FrameArrivedHandler, NeedsAPool) {
  EXPECT_EQ(MakeFrameArrivedHandler(kNothing)->Invoke(nullptr, nullptr), E_POINTER);
}

TEST(FrameArrivedHandler, MayBeCalledFromAnyThread) {
  const auto handler = MakeFrameArrivedHandler(kNothing);
  ComPtr<abi::IAgileObject> agile;
  ComPtr<abi::IFrameArrivedHandler> same;
  ComPtr<abi::IClosable> closable;
  EXPECT_EQ(QueryByIid(handler.Get(), agile), S_OK);
  EXPECT_EQ(QueryByIid(agile.Get(), same), S_OK);
  EXPECT_EQ(same.Get(), handler.Get());
  EXPECT_EQ(QueryByIid(handler.Get(), closable), E_NOINTERFACE);
  EXPECT_EQ(closable, nullptr);
  EXPECT_EQ(handler->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
}

TEST(FrameArrivedHandler, LivesAsLongAsItIsHeld) {
  const auto watched = std::make_shared<int>(0);
  auto handler = MakeFrameArrivedHandler([watched](auto&) { return S_OK; });
  ComPtr<abi::IFrameArrivedHandler> second = handler;
  handler = nullptr;
  EXPECT_EQ(watched.use_count(), 2);
  second = nullptr;
  EXPECT_EQ(watched.use_count(), 1);
}

}  // namespace
}  // namespace brisolte
