#pragma once

#include <d3d11_4.h>
#include <mfidl.h>

#include <string>
#include <utility>

#include "mf/attributes_proxy.h"

namespace brisolte::testing {

class MediaTypeProxy final : public AttributesProxy<IMFMediaType> {
 public:
  using AttributesProxy::AttributesProxy;

  HRESULT STDMETHODCALLTYPE GetMajorType(GUID* type) override { return real().GetMajorType(type); }
  HRESULT STDMETHODCALLTYPE IsCompressedFormat(WINBOOL* compressed) override {
    return real().IsCompressedFormat(compressed);
  }
  HRESULT STDMETHODCALLTYPE IsEqual(IMFMediaType* type, DWORD* flags) override {
    return real().IsEqual(type, flags);
  }
  HRESULT STDMETHODCALLTYPE GetRepresentation(GUID kind, LPVOID* representation) override {
    return real().GetRepresentation(kind, representation);
  }
  HRESULT STDMETHODCALLTYPE FreeRepresentation(GUID kind, LPVOID representation) override {
    return real().FreeRepresentation(kind, representation);
  }
};

class SampleProxy final : public AttributesProxy<IMFSample> {
 public:
  using AttributesProxy::AttributesProxy;

  HRESULT STDMETHODCALLTYPE AddBuffer(IMFMediaBuffer* buffer) override {
    return stage().Call("AddBuffer", "", [&] { return real().AddBuffer(buffer); });
  }
  HRESULT STDMETHODCALLTYPE SetSampleTime(LONGLONG time) override {
    return stage().Call("SetSampleTime", std::to_string(time), [&] { return real().SetSampleTime(time); });
  }
  HRESULT STDMETHODCALLTYPE SetSampleDuration(LONGLONG duration) override {
    return stage().Call("SetSampleDuration", std::to_string(duration),
                        [&] { return real().SetSampleDuration(duration); });
  }

  HRESULT STDMETHODCALLTYPE GetSampleFlags(DWORD* flags) override { return real().GetSampleFlags(flags); }
  HRESULT STDMETHODCALLTYPE SetSampleFlags(DWORD flags) override { return real().SetSampleFlags(flags); }
  HRESULT STDMETHODCALLTYPE GetSampleTime(LONGLONG* time) override { return real().GetSampleTime(time); }
  HRESULT STDMETHODCALLTYPE GetSampleDuration(LONGLONG* duration) override {
    return real().GetSampleDuration(duration);
  }
  HRESULT STDMETHODCALLTYPE GetBufferCount(DWORD* count) override { return real().GetBufferCount(count); }
  HRESULT STDMETHODCALLTYPE GetBufferByIndex(DWORD index, IMFMediaBuffer** buffer) override {
    return real().GetBufferByIndex(index, buffer);
  }
  HRESULT STDMETHODCALLTYPE ConvertToContiguousBuffer(IMFMediaBuffer** buffer) override {
    return real().ConvertToContiguousBuffer(buffer);
  }
  HRESULT STDMETHODCALLTYPE RemoveBufferByIndex(DWORD index) override {
    return real().RemoveBufferByIndex(index);
  }
  HRESULT STDMETHODCALLTYPE RemoveAllBuffers() override { return real().RemoveAllBuffers(); }
  HRESULT STDMETHODCALLTYPE GetTotalLength(DWORD* length) override { return real().GetTotalLength(length); }
  HRESULT STDMETHODCALLTYPE CopyToBuffer(IMFMediaBuffer* buffer) override {
    return real().CopyToBuffer(buffer);
  }
};

/// A buffer in memory, or over a texture: then with the interface for that as well.
class BufferProxy final : public standins::ComObject<IMFMediaBuffer, IMFDXGIBuffer> {
 public:
  BufferProxy(MediaStage& stage, Microsoft::WRL::ComPtr<IMFMediaBuffer> real)
      : stage_(stage), real_(std::move(real)) {
    real_.As(&surface_);
  }

  HRESULT STDMETHODCALLTYPE Lock(BYTE** bytes, DWORD* size, DWORD* length) override {
    const HRESULT result = stage_.Call("Lock", "", [&] { return real_->Lock(bytes, size, length); });
    if (SUCCEEDED(result) && size != nullptr && stage_.Asked("room in the buffer") < 0) {
      *size = 1;
    }
    return result;
  }
  HRESULT STDMETHODCALLTYPE Unlock() override {
    return stage_.Call("Unlock", "", [&] { return real_->Unlock(); });
  }
  HRESULT STDMETHODCALLTYPE SetCurrentLength(DWORD length) override {
    return stage_.Call("SetCurrentLength", std::to_string(length),
                       [&] { return real_->SetCurrentLength(length); });
  }
  HRESULT STDMETHODCALLTYPE GetCurrentLength(DWORD* length) override {
    return real_->GetCurrentLength(length);
  }
  HRESULT STDMETHODCALLTYPE GetMaxLength(DWORD* length) override { return real_->GetMaxLength(length); }

  HRESULT STDMETHODCALLTYPE GetResource(REFIID iid, LPVOID* resource) override {
    return surface_->GetResource(iid, resource);
  }
  HRESULT STDMETHODCALLTYPE GetSubresourceIndex(UINT* index) override {
    return surface_->GetSubresourceIndex(index);
  }
  HRESULT STDMETHODCALLTYPE GetUnknown(REFIID key, REFIID iid, LPVOID* object) override {
    return surface_->GetUnknown(key, iid, object);
  }
  HRESULT STDMETHODCALLTYPE SetUnknown(REFIID key, IUnknown* object) override {
    return stage_.Call("IMFDXGIBuffer::SetUnknown", "the texture's lease",
                       [&] { return surface_->SetUnknown(key, object); });
  }

 protected:
  std::optional<HRESULT> RefuseQuery(REFIID iid) override {
    const bool refused = iid == __uuidof(IMFDXGIBuffer) && surface_ == nullptr;
    return refused ? std::optional<HRESULT>(E_NOINTERFACE) : std::nullopt;
  }

 private:
  MediaStage& stage_;
  const Microsoft::WRL::ComPtr<IMFMediaBuffer> real_;
  Microsoft::WRL::ComPtr<IMFDXGIBuffer> surface_;
};

/// Which device this is, and whether threads may share it.
inline std::string DeviceText(const MediaStage& stage, IUnknown* unknown) {
  Microsoft::WRL::ComPtr<ID3D11Device> device;
  Microsoft::WRL::ComPtr<ID3D11DeviceContext> context;
  Microsoft::WRL::ComPtr<ID3D11Multithread> threads;
  if (FAILED(
          unknown->QueryInterface(__uuidof(ID3D11Device), reinterpret_cast<void**>(device.GetAddressOf())))) {
    return "no device";
  }
  device->GetImmediateContext(context.GetAddressOf());
  const bool isProtected = SUCCEEDED(context.As(&threads)) && threads->GetMultithreadProtected() != FALSE;
  return std::string(stage.IsOwnDevice(device.Get()) ? "its own device" : "the capture's device") +
         (isProtected ? ", multithread-protected" : "");
}

class DeviceManagerProxy final : public standins::ComObject<IMFDXGIDeviceManager> {
 public:
  DeviceManagerProxy(MediaStage& stage, Microsoft::WRL::ComPtr<IMFDXGIDeviceManager> real)
      : stage_(stage), real_(std::move(real)) {}

  HRESULT STDMETHODCALLTYPE ResetDevice(IUnknown* device, UINT token) override {
    return stage_.Call("ResetDevice", DeviceText(stage_, device),
                       [&] { return real_->ResetDevice(device, token); });
  }

  HRESULT STDMETHODCALLTYPE CloseDeviceHandle(HANDLE handle) override {
    return real_->CloseDeviceHandle(handle);
  }
  HRESULT STDMETHODCALLTYPE GetVideoService(HANDLE handle, REFIID iid, void** service) override {
    return real_->GetVideoService(handle, iid, service);
  }
  HRESULT STDMETHODCALLTYPE LockDevice(HANDLE handle, REFIID iid, void** device, WINBOOL block) override {
    return real_->LockDevice(handle, iid, device, block);
  }
  HRESULT STDMETHODCALLTYPE OpenDeviceHandle(HANDLE* handle) override {
    return real_->OpenDeviceHandle(handle);
  }
  HRESULT STDMETHODCALLTYPE TestDevice(HANDLE handle) override { return real_->TestDevice(handle); }
  HRESULT STDMETHODCALLTYPE UnlockDevice(HANDLE handle, WINBOOL save) override {
    return real_->UnlockDevice(handle, save);
  }

 private:
  MediaStage& stage_;
  const Microsoft::WRL::ComPtr<IMFDXGIDeviceManager> real_;
};

}  // namespace brisolte::testing
