#pragma once

#include "video/graphics_capture_abi.h"

namespace brisolte::abi {

struct IClosedHandler : IUnknown {
  static constexpr IID kIid{0xE9C610C0, 0xA68C, 0x5BD9, {0x80, 0x21, 0x85, 0x89, 0x34, 0x6E, 0xEE, 0xE2}};
  virtual HRESULT STDMETHODCALLTYPE Invoke(IGraphicsCaptureItem* sender, IInspectable* args) = 0;
};

}  // namespace brisolte::abi
