#pragma once

#include <memory>
#include <mutex>

#include "capture/capture_target.h"
#include "capture/closed_handler.h"
#include "capture/event_source.h"
#include "capture/weak_anchor.h"
#include "shared/apartment.h"

namespace brisolte::standins {

/// How the frame pool knows an item of this service from any other object.
struct IOwnItem : IUnknown {
  static constexpr IID kIid{0x8C1D4C0E, 0x0B0F, 0x4D4B, {0x9A, 0x55, 0x3C, 0x6F, 0x41, 0x8E, 0x2D, 0x10}};
  virtual const CaptureTarget& target() const = 0;
  /// How much larger than its content it calls itself, right and below.
  virtual abi::SizeInt32 InvisibleBorders() const = 0;
  /// Raises `Closed`, once, when the target is gone.
  virtual void NoticeClosed() = 0;
};

class CaptureItem final : public InspectableObject<abi::IGraphicsCaptureItem, IOwnItem> {
 public:
  explicit CaptureItem(CaptureTarget target);
  CaptureItem(const CaptureItem&) = delete;
  CaptureItem& operator=(const CaptureItem&) = delete;

  HRESULT STDMETHODCALLTYPE get_DisplayName(HSTRING* name) override;
  HRESULT STDMETHODCALLTYPE get_Size(abi::SizeInt32* size) override;
  HRESULT STDMETHODCALLTYPE add_Closed(abi::IClosedHandler* handler,
                                       abi::EventRegistrationToken* token) override;
  HRESULT STDMETHODCALLTYPE remove_Closed(abi::EventRegistrationToken token) override;

  const CaptureTarget& target() const override { return target_; }
  abi::SizeInt32 InvisibleBorders() const override;
  void NoticeClosed() override;

 private:
  using Anchor = WeakAnchor<CaptureItem>;

  ~CaptureItem() override;
  static void Watch(const std::shared_ptr<Anchor>& anchor);

  const HomeApartment home_;
  const CaptureTarget target_;
  EventSource<abi::IClosedHandler> closed_;
  std::shared_ptr<Anchor> anchor_;
  std::mutex mutex_;
  bool watched_ = false;
  bool raised_ = false;
  abi::SizeInt32 lastSize_{0, 0};
};

}  // namespace brisolte::standins
