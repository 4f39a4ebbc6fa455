#include "video/capture_service.h"

#include <roapi.h>
#include <winstring.h>

#include <cwchar>
#include <utility>

#include "common/given_object.h"
#include "common/hresult_error.h"
#include "video/query_interface.h"

namespace brisolte {

using Microsoft::WRL::ComPtr;

namespace {

constexpr auto kClosed = static_cast<HRESULT>(0x80000013);  // RO_E_CLOSED, which not every SDK names

template <typename Interface>
HRESULT GetFactory(const wchar_t* className, ComPtr<Interface>& factory) {
  HSTRING_HEADER header{};
  HSTRING name = nullptr;  // refers to the characters and the header, so there is nothing to free
  const auto length = static_cast<UINT32>(std::wcslen(className));
  const HRESULT made = WindowsCreateStringReference(className, length, &header, &name);
  return FAILED(made)
             ? made
             : Given(RoGetActivationFactory(name, Interface::kIid,
                                            reinterpret_cast<void**>(factory.ReleaseAndGetAddressOf())),
                     factory);
}

/// Sets a property of the session's to false, through a later interface that it may not have. E_ACCESSDENIED
/// when it takes that and stays as it is, as the system may for programs without the capability.
template <typename Interface>
HRESULT SwitchOff(abi::IGraphicsCaptureSession* session,
                  HRESULT (STDMETHODCALLTYPE Interface::*put)(boolean value),
                  HRESULT (STDMETHODCALLTYPE Interface::*get)(boolean* value)) {
  if (session == nullptr) {
    return kClosed;
  }
  ComPtr<Interface> later;
  if (const HRESULT found = Given(QueryByIid(session, later), later); FAILED(found)) {
    return found;
  }
  if (const HRESULT set = (later.Get()->*put)(0); FAILED(set)) {
    return set;
  }
  boolean value = 0;
  const HRESULT got = (later.Get()->*get)(&value);
  return SUCCEEDED(got) && value != 0 ? E_ACCESSDENIED : S_OK;
}

}  // namespace

HRESULT CloseWinRt(IUnknown* object) {
  ComPtr<abi::IClosable> closable;
  const HRESULT found = QueryByIid(object, closable);
  return FAILED(found) ? found : closable->Close();
}

CaptureService::~CaptureService() {
  Close();
}

HRESULT CaptureService::Close() {
  frame_ = nullptr;
  // Handler, session, pool: each ends what the next one could still deliver through it.
  if (std::exchange(subscribed_, false)) {
    pool_->remove_FrameArrived(subscription_);
  }
  const ComPtr<abi::IGraphicsCaptureSession> session = std::exchange(session_, nullptr);
  const HRESULT sessionClosed = session != nullptr ? CloseWinRt(session.Get()) : S_OK;
  const ComPtr<abi::IDirect3D11CaptureFramePool> pool = std::exchange(pool_, nullptr);
  const HRESULT poolClosed = pool != nullptr ? CloseWinRt(pool.Get()) : S_OK;
  return FAILED(sessionClosed) ? sessionClosed : poolClosed;
}

HRESULT CaptureService::ObtainItemInterop() {
  return GetFactory(abi::kGraphicsCaptureItemClass, interop_);
}

HRESULT CaptureService::CreateItemForMonitor(HMONITOR monitor) {
  return interop_->CreateForMonitor(monitor, abi::IGraphicsCaptureItem::kIid,
                                    reinterpret_cast<void**>(item_.ReleaseAndGetAddressOf()));
}

HRESULT CaptureService::CreateItemForWindow(HWND window) {
  return interop_->CreateForWindow(window, abi::IGraphicsCaptureItem::kIid,
                                   reinterpret_cast<void**>(item_.ReleaseAndGetAddressOf()));
}

PixelSize CaptureService::ItemSize() const {
  abi::SizeInt32 size{};
  ThrowIfFailed(item_->get_Size(&size));
  return {size.Width, size.Height};
}

HRESULT CaptureService::CreateFramePool(PixelSize size, std::int32_t buffers) {
  ComPtr<abi::IDirect3D11CaptureFramePoolStatics2> factory;
  ThrowIfFailed(GetFactory(abi::kFramePoolClass, factory));
  return Given(
      factory->CreateFreeThreaded(wrapped_.Get(), abi::DirectXPixelFormat::B8G8R8A8UIntNormalized, buffers,
                                  {size.width, size.height}, pool_.ReleaseAndGetAddressOf()),
      pool_);
}

void CaptureService::Subscribe(PoolHandler handler) {
  const auto object = MakeFrameArrivedHandler(std::move(handler));
  ThrowIfFailed(pool_->add_FrameArrived(object.Get(), &subscription_));
  subscribed_ = true;
}

HRESULT CaptureService::CreateSession() {
  return pool_->CreateCaptureSession(item_.Get(), session_.ReleaseAndGetAddressOf());
}

HRESULT CaptureService::LeaveOutCursor() {
  return SwitchOff(session_.Get(), &abi::IGraphicsCaptureSession2::put_IsCursorCaptureEnabled,
                   &abi::IGraphicsCaptureSession2::get_IsCursorCaptureEnabled);
}

HRESULT CaptureService::LeaveOutBorder() {
  return SwitchOff(session_.Get(), &abi::IGraphicsCaptureSession3::put_IsBorderRequired,
                   &abi::IGraphicsCaptureSession3::get_IsBorderRequired);
}

void CaptureService::StartCapture() {
  if (session_ == nullptr) {
    throw HResultError(kClosed);
  }
  ThrowIfFailed(session_->StartCapture());
}

void CaptureService::CloseSession() {
  const ComPtr<abi::IGraphicsCaptureSession> session = std::exchange(session_, nullptr);
  if (session != nullptr) {
    ThrowIfFailed(CloseWinRt(session.Get()));
  }
}

void CaptureService::ReleaseTarget() {
  item_ = nullptr;
  wrapped_ = nullptr;
}

bool CaptureService::TakeFrame() {
  ThrowIfFailed(pool_->TryGetNextFrame(frame_.ReleaseAndGetAddressOf()));
  return frame_ != nullptr;
}

ComPtr<abi::IDirect3DSurface> CaptureService::FrameSurface() const {
  ComPtr<abi::IDirect3DSurface> surface;
  ThrowIfFailed(frame_->get_Surface(surface.GetAddressOf()));
  return surface;
}

PixelSize CaptureService::FrameContent() const {
  abi::SizeInt32 size{};
  ThrowIfFailed(frame_->get_ContentSize(&size));
  return {size.Width, size.Height};
}

}  // namespace brisolte
