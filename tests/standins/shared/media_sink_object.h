#pragma once

#include <mfidl.h>

#include "shared/com_object.h"

namespace brisolte::standins {

/// A media sink that serves only to be shut down, which the sink writer's users do to it.
class MediaSinkObject : public ComObject<IMFMediaSink> {
 public:
  HRESULT STDMETHODCALLTYPE GetCharacteristics(DWORD* /*flags*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE AddStreamSink(DWORD /*id*/, IMFMediaType* /*type*/,
                                          IMFStreamSink** /*sink*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE RemoveStreamSink(DWORD /*id*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetStreamSinkCount(DWORD* /*count*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetStreamSinkByIndex(DWORD /*index*/, IMFStreamSink** /*sink*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetStreamSinkById(DWORD /*id*/, IMFStreamSink** /*sink*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE SetPresentationClock(IMFPresentationClock* /*clock*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetPresentationClock(IMFPresentationClock** /*clock*/) override {
    return E_NOTIMPL;
  }
};

}  // namespace brisolte::standins
