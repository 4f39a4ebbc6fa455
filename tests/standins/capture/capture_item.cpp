#include "capture/capture_item.h"

#include "capture/service_thread.h"
#include "shared/faults.h"

namespace brisolte::standins {

namespace {
constexpr DWORD kWatchEveryMs = 30;
}

CaptureItem::CaptureItem(CaptureTarget target)
    : InspectableObject(abi::kGraphicsCaptureItemClass),
      target_(target),
      anchor_(std::make_shared<Anchor>()) {
  anchor_->Set(this);
  if (const auto rect = target_.Rect()) {
    lastSize_ = SizeOf(*rect);
  }
}

CaptureItem::~CaptureItem() {
  anchor_->Clear();
}

HRESULT CaptureItem::get_DisplayName(HSTRING* name) {
  if (name == nullptr) {
    return E_POINTER;
  }
  const std::wstring text = target_.Name();
  return WindowsCreateString(text.c_str(), static_cast<UINT32>(text.size()), name);
}

HRESULT CaptureItem::get_Size(abi::SizeInt32* size) {
  if (size == nullptr) {
    return E_POINTER;
  }
  if (const HRESULT admitted = home_.Admit(); FAILED(admitted)) {
    return admitted;
  }
  if (const auto fault = TakeFault("get_Size")) {
    return *fault;
  }
  const auto rect = target_.Rect();
  const std::lock_guard lock(mutex_);
  if (rect) {
    lastSize_ = SizeOf(*rect);
  }
  const abi::SizeInt32 borders = InvisibleBorders();
  *size = {lastSize_.Width + borders.Width, lastSize_.Height + borders.Height};
  return S_OK;
}

abi::SizeInt32 CaptureItem::InvisibleBorders() const {
  const bool has = target_.OfWindow() && TakeFault("InvisibleBorders");
  return has ? abi::SizeInt32{14, 7} : abi::SizeInt32{0, 0};
}

HRESULT CaptureItem::add_Closed(abi::IClosedHandler* handler, abi::EventRegistrationToken* token) {
  if (const HRESULT admitted = home_.Admit(); FAILED(admitted)) {
    return admitted;
  }
  const HRESULT added = closed_.Add(handler, token);
  const std::lock_guard lock(mutex_);
  if (SUCCEEDED(added) && !watched_) {
    watched_ = StartServiceThread([anchor = anchor_] { Watch(anchor); });
  }
  return added;
}

HRESULT CaptureItem::remove_Closed(abi::EventRegistrationToken token) {
  if (const HRESULT admitted = home_.Admit(); FAILED(admitted)) {
    return admitted;
  }
  return closed_.Remove(token);
}

void CaptureItem::NoticeClosed() {
  {
    const std::lock_guard lock(mutex_);
    if (raised_ || !target_.Gone()) {
      return;
    }
    raised_ = true;
  }
  closed_.Raise<abi::IGraphicsCaptureItem>(this);
}

void CaptureItem::Watch(const std::shared_ptr<Anchor>& anchor) {
  for (bool gone = false; !gone; Sleep(kWatchEveryMs)) {
    const auto item = anchor->Lock();
    if (item == nullptr) {
      return;
    }
    item->NoticeClosed();
    gone = item->target_.Gone();
  }
}

}  // namespace brisolte::standins
