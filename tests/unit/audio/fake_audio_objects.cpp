#include "fake_audio_objects.h"

#include <audioclient.h>
#include <propsys.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include "common/text.h"
#include "task_memory.h"

namespace brisolte::testing {
namespace {

using Microsoft::WRL::ComPtr;

/// One object of the service, which counts it as long as somebody holds it.
template <typename Interface>
class FakeObject : public Interface {
 public:
  FakeObject(FakeAudioService& service, std::string name) : service_(service), name_(std::move(name)) {
    service_.CountObject(1);
  }
  FakeObject(const FakeObject&) = delete;
  FakeObject& operator=(const FakeObject&) = delete;
  virtual ~FakeObject() { service_.CountObject(-1); }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    const bool known = IsEqualIID(iid, __uuidof(IUnknown)) || IsEqualIID(iid, __uuidof(Interface));
    *object = known ? this : nullptr;
    if (!known) {
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) {
      delete this;
    }
    return left;
  }

 protected:
  HRESULT Enter(const std::string& method) { return service_.Enter(name_ + "." + method); }

  FakeAudioService& service_;
  const std::string name_;

 private:
  std::atomic<ULONG> references_ = 1;
};

template <typename Object, typename... Arguments>
HRESULT Give(void** out, Arguments&&... arguments) {
  // Its only reference is the caller's from here on.
  *out = std::make_unique<Object>(std::forward<Arguments>(arguments)...).release();
  return S_OK;
}

HRESULT CopyText(const std::string& text, LPWSTR* copy) {
  const std::wstring wide = ToWide(text);
  const std::size_t bytes = (wide.size() + 1) * sizeof(wchar_t);
  *copy = static_cast<wchar_t*>(AllocateWatched(bytes));
  std::memcpy(*copy, wide.c_str(), bytes);
  return S_OK;
}

std::vector<std::uint8_t> FormatBytes(const WAVEFORMATEX* format) {
  if (format == nullptr) {
    return {};
  }
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(format);
  return {bytes, bytes + sizeof(WAVEFORMATEX) + format->cbSize};
}

class FakeCaptureClient : public FakeObject<IAudioCaptureClient> {
 public:
  FakeCaptureClient(FakeAudioService& service, std::string id)
      : FakeObject(service, id + ".capture"), id_(std::move(id)) {}

  HRESULT STDMETHODCALLTYPE GetNextPacketSize(UINT32* frames) override {
    // The second and later calls of one poll have a name of their own, so that a test can fail just them.
    const HRESULT result = Enter(gathering_ ? "GetNextPacketSize again" : "GetNextPacketSize");
    if (FAILED(result)) {
      gathering_ = false;
      return result;
    }
    *frames = service_.NextPacketFrames(id_);
    gathering_ = gathering_ && *frames != 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetBuffer(BYTE** data, UINT32* frames, DWORD* flags, UINT64* /*position*/,
                                      UINT64* /*qpcPosition*/) override {
    if (const HRESULT result = Enter("GetBuffer"); FAILED(result)) {
      return result;
    }
    packet_ = service_.TakePacket(id_);
    *data = packet_.bytes.empty() ? nullptr : packet_.bytes.data();
    *frames = packet_.frames;
    *flags = AUDCLNT_BUFFERFLAGS_SILENT;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE ReleaseBuffer(UINT32 frames) override {
    service_.Released(name_, frames, 0);
    gathering_ = frames != 0;
    // A packet is not to be read after it was given back.
    std::ranges::fill(packet_.bytes, std::uint8_t{0xDD});
    return Enter("ReleaseBuffer");
  }

 private:
  const std::string id_;
  FakePacket packet_;
  bool gathering_ = false;
};

class FakeRenderClient : public FakeObject<IAudioRenderClient> {
 public:
  FakeRenderClient(FakeAudioService& service, const std::string& id, std::size_t blockAlign)
      : FakeObject(service, id + ".render"), blockAlign_(blockAlign) {}

  HRESULT STDMETHODCALLTYPE GetBuffer(UINT32 frames, BYTE** data) override {
    if (const HRESULT result = Enter("GetBuffer"); FAILED(result)) {
      return result;
    }
    buffer_.assign(frames * blockAlign_, 0xEE);
    *data = buffer_.data();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE ReleaseBuffer(UINT32 frames, DWORD flags) override {
    service_.Played(buffer_);
    service_.Released(name_, frames, flags);
    return Enter("ReleaseBuffer");
  }

 private:
  const std::size_t blockAlign_;
  std::vector<std::uint8_t> buffer_;
};

class FakeClient : public FakeObject<IAudioClient> {
 public:
  FakeClient(FakeAudioService& service, std::string id, const std::string& role)
      : FakeObject(service, id + "." + role), id_(std::move(id)) {}

  HRESULT STDMETHODCALLTYPE Initialize(AUDCLNT_SHAREMODE mode, DWORD flags, REFERENCE_TIME duration,
                                       REFERENCE_TIME periodicity, const WAVEFORMATEX* format,
                                       LPCGUID session) override {
    service_.Initialized(
        {name_, mode, flags, duration, periodicity, FormatBytes(format), session != nullptr});
    return Enter("Initialize");
  }
  HRESULT STDMETHODCALLTYPE GetBufferSize(UINT32* frames) override {
    *frames = service_.bufferFrames;
    return Enter("GetBufferSize");
  }
  HRESULT STDMETHODCALLTYPE GetStreamLatency(REFERENCE_TIME* /*latency*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetCurrentPadding(UINT32* frames) override {
    *frames = service_.padding();
    return Enter("GetCurrentPadding");
  }
  HRESULT STDMETHODCALLTYPE IsFormatSupported(AUDCLNT_SHAREMODE /*mode*/, const WAVEFORMATEX* /*format*/,
                                              WAVEFORMATEX** /*closest*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetMixFormat(WAVEFORMATEX** format) override {
    *format = nullptr;
    if (const HRESULT result = Enter("GetMixFormat"); FAILED(result)) {
      return result;
    }
    const auto& bytes = service_.Find(id_)->mixFormat;
    if (!bytes.empty()) {
      *format = static_cast<WAVEFORMATEX*>(AllocateWatched(bytes.size()));
      std::memcpy(*format, bytes.data(), bytes.size());
    }
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetDevicePeriod(REFERENCE_TIME* /*usual*/, REFERENCE_TIME* /*least*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Start() override { return Enter("Start"); }
  HRESULT STDMETHODCALLTYPE Stop() override { return Enter("Stop"); }
  HRESULT STDMETHODCALLTYPE Reset() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE SetEventHandle(HANDLE /*event*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetService(REFIID iid, void** object) override {
    *object = nullptr;
    if (const HRESULT result = Enter("GetService"); FAILED(result)) {
      return result;
    }
    if (IsEqualIID(iid, __uuidof(IAudioCaptureClient))) {
      return Give<FakeCaptureClient>(object, service_, id_);
    }
    const auto& format = service_.Find(id_)->mixFormat;
    return Give<FakeRenderClient>(object, service_, id_,
                                  format.empty() ? 1U : format[12] + 256U * format[13]);
  }

 private:
  const std::string id_;
};

class FakePropertyStore : public FakeObject<IPropertyStore> {
 public:
  using FakeObject::FakeObject;

  HRESULT STDMETHODCALLTYPE GetCount(DWORD* /*count*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetAt(DWORD /*index*/, PROPERTYKEY* /*key*/) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetValue(REFPROPERTYKEY key, PROPVARIANT* value) override {
    // The friendly name: {A45C254E-DF1C-4EFD-8020-67D146A850E0}, 14
    if (key.fmtid.Data1 != 0xA45C254E || key.pid != 14) {
      return E_INVALIDARG;
    }
    const FakeEndpoint& endpoint = *service_.Find(name_.substr(0, name_.find('.')));
    PropVariantInit(value);
    value->vt = endpoint.nameType;
    if (endpoint.nameType == VT_LPWSTR) {
      CopyText(ToUtf8(endpoint.name), &value->pwszVal);
    }
    return Enter("GetValue");
  }
  HRESULT STDMETHODCALLTYPE SetValue(REFPROPERTYKEY /*key*/, REFPROPVARIANT /*value*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Commit() override { return E_NOTIMPL; }
};

class FakeDevice : public FakeObject<IMMDevice> {
 public:
  using FakeObject::FakeObject;

  HRESULT STDMETHODCALLTYPE Activate(REFIID iid, DWORD context, PROPVARIANT* /*parameters*/,
                                     void** object) override {
    *object = nullptr;
    const bool first = clients_++ == 0;
    if (const HRESULT result = Enter(first ? "Activate" : "Activate player"); FAILED(result)) {
      return result;
    }
    if (!IsEqualIID(iid, __uuidof(IAudioClient)) || context != CLSCTX_ALL) {
      return E_INVALIDARG;
    }
    return Give<FakeClient>(object, service_, name_, first ? "client" : "player");
  }
  HRESULT STDMETHODCALLTYPE OpenPropertyStore(DWORD access, IPropertyStore** properties) override {
    *properties = nullptr;
    const HRESULT result = Enter("OpenPropertyStore");
    if (FAILED(result) || access != STGM_READ) {
      return FAILED(result) ? result : E_ACCESSDENIED;
    }
    return Give<FakePropertyStore>(reinterpret_cast<void**>(properties), service_, name_ + ".properties");
  }
  HRESULT STDMETHODCALLTYPE GetId(LPWSTR* id) override {
    *id = nullptr;
    const HRESULT result = Enter("GetId");
    return FAILED(result) ? result : CopyText(name_, id);
  }
  HRESULT STDMETHODCALLTYPE GetState(DWORD* state) override {
    *state = service_.Find(name_)->state;
    return Enter("GetState");
  }

 private:
  int clients_ = 0;
};

class FakeCollection : public FakeObject<IMMDeviceCollection> {
 public:
  using FakeObject::FakeObject;

  HRESULT STDMETHODCALLTYPE GetCount(UINT* count) override {
    *count = static_cast<UINT>(service_.endpoints.size());
    return Enter("GetCount");
  }
  HRESULT STDMETHODCALLTYPE Item(UINT index, IMMDevice** device) override {
    *device = nullptr;
    if (const HRESULT result = Enter("Item(" + std::to_string(index) + ")"); FAILED(result)) {
      return result;
    }
    return Give<FakeDevice>(reinterpret_cast<void**>(device), service_, service_.endpoints.at(index).id);
  }
};

class FakeEnumerator : public FakeObject<IMMDeviceEnumerator> {
 public:
  using FakeObject::FakeObject;

  HRESULT STDMETHODCALLTYPE EnumAudioEndpoints(EDataFlow flow, DWORD states,
                                               IMMDeviceCollection** devices) override {
    *devices = nullptr;
    const HRESULT result =
        Enter("EnumAudioEndpoints(" + std::to_string(flow) + ", " + std::to_string(states) + ")");
    return FAILED(result) ? result
                          : Give<FakeCollection>(reinterpret_cast<void**>(devices), service_, "collection");
  }
  HRESULT STDMETHODCALLTYPE GetDefaultAudioEndpoint(EDataFlow flow, ERole role, IMMDevice** device) override {
    *device = nullptr;
    const HRESULT result =
        Enter("GetDefaultAudioEndpoint(" + std::to_string(flow) + ", " + std::to_string(role) + ")");
    if (FAILED(result) || service_.defaultId.empty()) {
      return FAILED(result) ? result : HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
    }
    return Give<FakeDevice>(reinterpret_cast<void**>(device), service_, service_.defaultId);
  }
  HRESULT STDMETHODCALLTYPE GetDevice(LPCWSTR id, IMMDevice** device) override {
    *device = nullptr;
    const HRESULT result = Enter("GetDevice");
    if (FAILED(result) || service_.Find(ToUtf8(id)) == nullptr) {
      return FAILED(result) ? result : HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
    }
    return Give<FakeDevice>(reinterpret_cast<void**>(device), service_, ToUtf8(id));
  }
  HRESULT STDMETHODCALLTYPE RegisterEndpointNotificationCallback(IMMNotificationClient* /*client*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE
  UnregisterEndpointNotificationCallback(IMMNotificationClient* /*client*/) override {
    return E_NOTIMPL;
  }
};

class FakeFactory : public FakeObject<IClassFactory> {
 public:
  using FakeObject::FakeObject;

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    *object = nullptr;
    if (outer != nullptr || !IsEqualIID(iid, __uuidof(IMMDeviceEnumerator))) {
      return E_INVALIDARG;
    }
    const HRESULT result = Enter("CreateInstance");
    return FAILED(result) ? result : Give<FakeEnumerator>(object, service_, "enumerator");
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL /*lock*/) override { return S_OK; }
};

}  // namespace

ComPtr<IClassFactory> MakeEnumeratorFactory(FakeAudioService& service) {
  ComPtr<IClassFactory> factory;
  factory.Attach(std::make_unique<FakeFactory>(service, "factory").release());
  return factory;
}

}  // namespace brisolte::testing
