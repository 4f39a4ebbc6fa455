#pragma once

#include <mfobjects.h>
#include <wrl/client.h>

#include <string>
#include <utility>

#include "mf/media_names.h"
#include "mf/media_stage.h"
#include "shared/com_object.h"

namespace brisolte::testing {

/// An object with attributes of the platform's that writes down what is set, or fails it, and passes
/// everything on. `Interface` is IMFAttributes or derived from it.
template <typename Interface>
class AttributesProxy : public standins::ComObject<Interface> {
 public:
  AttributesProxy(MediaStage& stage, Microsoft::WRL::ComPtr<Interface> real)
      : stage_(stage), real_(std::move(real)) {}

  HRESULT STDMETHODCALLTYPE SetUINT32(REFGUID key, UINT32 value) override {
    return stage_.Call("SetUINT32", Setting(key, std::to_string(value)),
                       [&] { return real_->SetUINT32(key, value); });
  }
  HRESULT STDMETHODCALLTYPE SetUINT64(REFGUID key, UINT64 value) override {
    const std::string pair = std::to_string(value >> 32) + " : " + std::to_string(value & 0xFFFFFFFF);
    return stage_.Call("SetUINT64", Setting(key, pair), [&] { return real_->SetUINT64(key, value); });
  }
  HRESULT STDMETHODCALLTYPE SetGUID(REFGUID key, REFGUID value) override {
    return stage_.Call("SetGUID", Setting(key, MediaGuidText(value)),
                       [&] { return real_->SetGUID(key, value); });
  }
  HRESULT STDMETHODCALLTYPE SetUnknown(REFGUID key, IUnknown* value) override {
    return stage_.Call("SetUnknown", Setting(key, value == nullptr ? "null" : "an object"),
                       [&] { return real_->SetUnknown(key, value); });
  }

  HRESULT STDMETHODCALLTYPE GetItem(REFGUID key, PROPVARIANT* value) override {
    return real_->GetItem(key, value);
  }
  HRESULT STDMETHODCALLTYPE GetItemType(REFGUID key, MF_ATTRIBUTE_TYPE* type) override {
    return real_->GetItemType(key, type);
  }
  HRESULT STDMETHODCALLTYPE CompareItem(REFGUID key, REFPROPVARIANT value, WINBOOL* result) override {
    return real_->CompareItem(key, value, result);
  }
  HRESULT STDMETHODCALLTYPE Compare(IMFAttributes* theirs, MF_ATTRIBUTES_MATCH_TYPE type,
                                    WINBOOL* result) override {
    return real_->Compare(theirs, type, result);
  }
  HRESULT STDMETHODCALLTYPE GetUINT32(REFGUID key, UINT32* value) override {
    return real_->GetUINT32(key, value);
  }
  HRESULT STDMETHODCALLTYPE GetUINT64(REFGUID key, UINT64* value) override {
    return real_->GetUINT64(key, value);
  }
  HRESULT STDMETHODCALLTYPE GetDouble(REFGUID key, double* value) override {
    return real_->GetDouble(key, value);
  }
  HRESULT STDMETHODCALLTYPE GetGUID(REFGUID key, GUID* value) override { return real_->GetGUID(key, value); }
  HRESULT STDMETHODCALLTYPE GetStringLength(REFGUID key, UINT32* length) override {
    return real_->GetStringLength(key, length);
  }
  HRESULT STDMETHODCALLTYPE GetString(REFGUID key, LPWSTR value, UINT32 size, UINT32* length) override {
    return real_->GetString(key, value, size, length);
  }
  HRESULT STDMETHODCALLTYPE GetAllocatedString(REFGUID key, LPWSTR* value, UINT32* length) override {
    return real_->GetAllocatedString(key, value, length);
  }
  HRESULT STDMETHODCALLTYPE GetBlobSize(REFGUID key, UINT32* size) override {
    return real_->GetBlobSize(key, size);
  }
  HRESULT STDMETHODCALLTYPE GetBlob(REFGUID key, UINT8* bytes, UINT32 size, UINT32* blobSize) override {
    return real_->GetBlob(key, bytes, size, blobSize);
  }
  HRESULT STDMETHODCALLTYPE GetAllocatedBlob(REFGUID key, UINT8** bytes, UINT32* size) override {
    return real_->GetAllocatedBlob(key, bytes, size);
  }
  HRESULT STDMETHODCALLTYPE GetUnknown(REFGUID key, REFIID iid, LPVOID* object) override {
    return real_->GetUnknown(key, iid, object);
  }
  HRESULT STDMETHODCALLTYPE SetItem(REFGUID key, REFPROPVARIANT value) override {
    return real_->SetItem(key, value);
  }
  HRESULT STDMETHODCALLTYPE DeleteItem(REFGUID key) override { return real_->DeleteItem(key); }
  HRESULT STDMETHODCALLTYPE DeleteAllItems() override { return real_->DeleteAllItems(); }
  HRESULT STDMETHODCALLTYPE SetDouble(REFGUID key, double value) override {
    return real_->SetDouble(key, value);
  }
  HRESULT STDMETHODCALLTYPE SetString(REFGUID key, LPCWSTR value) override {
    return real_->SetString(key, value);
  }
  HRESULT STDMETHODCALLTYPE SetBlob(REFGUID key, const UINT8* bytes, UINT32 size) override {
    return real_->SetBlob(key, bytes, size);
  }
  HRESULT STDMETHODCALLTYPE LockStore() override { return real_->LockStore(); }
  HRESULT STDMETHODCALLTYPE UnlockStore() override { return real_->UnlockStore(); }
  HRESULT STDMETHODCALLTYPE GetCount(UINT32* count) override { return real_->GetCount(count); }
  HRESULT STDMETHODCALLTYPE GetItemByIndex(UINT32 index, GUID* key, PROPVARIANT* value) override {
    return real_->GetItemByIndex(index, key, value);
  }
  HRESULT STDMETHODCALLTYPE CopyAllItems(IMFAttributes* destination) override {
    return real_->CopyAllItems(destination);
  }

 protected:
  void* FindBase(REFIID iid) override {
    return iid == __uuidof(IMFAttributes) ? static_cast<IMFAttributes*>(this) : nullptr;
  }

  MediaStage& stage() const { return stage_; }
  Interface& real() const { return *real_.Get(); }

 private:
  static std::string Setting(REFGUID key, const std::string& value) {
    return MediaGuidText(key) + " = " + value;
  }

  MediaStage& stage_;
  const Microsoft::WRL::ComPtr<Interface> real_;
};

}  // namespace brisolte::testing
