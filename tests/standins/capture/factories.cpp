#include <activation.h>
#include <windows.h>

#include <string_view>

#include "capture/capture_item.h"
#include "capture/com_watch.h"
#include "capture/frame_pool.h"
#include "shared/apartment.h"
#include "shared/faults.h"

namespace brisolte::standins {

namespace {

class ItemFactory final : public InspectableObject<IActivationFactory, abi::IGraphicsCaptureItemInterop> {
 public:
  ItemFactory() : InspectableObject(abi::kGraphicsCaptureItemClass) {}

  HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable** /*instance*/) override { return E_NOTIMPL; }

  HRESULT STDMETHODCALLTYPE CreateForWindow(HWND window, REFIID iid, void** item) override {
    // Asks the window itself when it is one of this process.
    GetWindowTextLengthW(window);
    return Create("CreateForWindow", CaptureTarget(window), iid, item);
  }

  HRESULT STDMETHODCALLTYPE CreateForMonitor(HMONITOR monitor, REFIID iid, void** item) override {
    return Create("CreateForMonitor", CaptureTarget(monitor), iid, item);
  }

 protected:
  std::optional<HRESULT> RefuseQuery(REFIID iid) override {
    return iid == abi::IGraphicsCaptureItemInterop::kIid ? TakeFault("GetItemInterop") : std::nullopt;
  }

 private:
  HRESULT Create(std::string_view call, const CaptureTarget& target, REFIID iid, void** item) const {
    if (item == nullptr) {
      return E_POINTER;
    }
    *item = nullptr;
    if (const HRESULT admitted = home_.Admit(); FAILED(admitted)) {
      return admitted;
    }
    if (const auto fault = TakeFault(call)) {
      return *fault;
    }
    return target.Valid() ? Make<CaptureItem>(target)->QueryInterface(iid, item) : E_INVALIDARG;
  }

  const HomeApartment home_;
};

class PoolFactory final
    : public InspectableObject<IActivationFactory, abi::IDirect3D11CaptureFramePoolStatics,
                               abi::IDirect3D11CaptureFramePoolStatics2> {
 public:
  PoolFactory() : InspectableObject(abi::kFramePoolClass) {}

  HRESULT STDMETHODCALLTYPE ActivateInstance(IInspectable** /*instance*/) override { return E_NOTIMPL; }

  // Such a pool raises its event on the thread that made it, through that thread's DispatcherQueue. No thread
  // has one here: what would call back elsewhere has to fail instead.
  HRESULT STDMETHODCALLTYPE Create(abi::IDirect3DDevice* /*device*/, abi::DirectXPixelFormat /*format*/,
                                   INT32 /*buffers*/, abi::SizeInt32 /*size*/,
                                   abi::IDirect3D11CaptureFramePool** pool) override {
    if (pool == nullptr) {
      return E_POINTER;
    }
    *pool = nullptr;
    return RPC_E_WRONG_THREAD;
  }

  HRESULT STDMETHODCALLTYPE CreateFreeThreaded(abi::IDirect3DDevice* device, abi::DirectXPixelFormat format,
                                               INT32 buffers, abi::SizeInt32 size,
                                               abi::IDirect3D11CaptureFramePool** pool) override {
    if (pool == nullptr) {
      return E_POINTER;
    }
    *pool = nullptr;
    if (const HRESULT admitted = home_.Admit(); FAILED(admitted)) {
      return admitted;
    }
    if (const auto fault = TakeFault("CreateFreeThreaded")) {
      return *fault;
    }
    auto made = Make<FramePool>();
    const HRESULT filled = made->Fill(device, format, buffers, size);
    return FAILED(filled) ? filled : Give<abi::IDirect3D11CaptureFramePool>(made, pool);
  }

 protected:
  std::optional<HRESULT> RefuseQuery(REFIID iid) override {
    const bool statics = iid == abi::IDirect3D11CaptureFramePoolStatics::kIid ||
                         iid == abi::IDirect3D11CaptureFramePoolStatics2::kIid;
    return statics ? TakeFault("GetFramePoolStatics") : std::nullopt;
  }

 private:
  const HomeApartment home_;
};

}  // namespace

}  // namespace brisolte::standins

extern "C" {

HRESULT STDMETHODCALLTYPE DllGetActivationFactory(HSTRING className, IActivationFactory** factory) {
  using namespace brisolte;
  if (factory == nullptr) {
    return E_POINTER;
  }
  *factory = nullptr;
  if (!standins::Apartment().exists()) {
    return CO_E_NOTINITIALIZED;
  }
  standins::WatchCom();
  const std::wstring_view name = WindowsGetStringRawBuffer(className, nullptr);
  if (name == abi::kGraphicsCaptureItemClass) {
    return standins::Give<IActivationFactory>(standins::Make<standins::ItemFactory>(), factory);
  }
  if (name == abi::kFramePoolClass) {
    return standins::Give<IActivationFactory>(standins::Make<standins::PoolFactory>(), factory);
  }
  return CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT STDMETHODCALLTYPE DllCanUnloadNow() {
  return brisolte::standins::liveObjects == 0 ? S_OK : S_FALSE;
}

/// Objects of the service that are alive: what tests look at to see that all were released.
long StandinObjectCount() {
  return brisolte::standins::liveObjects;
}

/// How often the process let go of COM after it had used the service.
long StandinComLetGoCount() {
  return brisolte::standins::ComLetGoCount();
}
}
