#include <mfapi.h>
#include <wrl/client.h>

#include "common/given_object.h"
#include "encoder/mf/media_foundation.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

/// Stands for a function that was not found.
template <typename... Arguments>
HRESULT WINAPI Missing(Arguments... /*arguments*/) {
  return E_NOTIMPL;
}

/// Looked up by name because editions of Windows without the media features lack them, and the module must
/// load there all the same. The libraries stay loaded: their threads may outlast a shutdown.
class Functions {
 public:
  Functions() {
    const HMODULE platform = Load(L"mfplat.dll");
    const HMODULE readWrite = Load(L"mfreadwrite.dll");
    const HMODULE transcoding = Load(L"mf.dll");
    Find(platform, "MFStartup", startup);
    Find(platform, "MFShutdown", shutdown);
    Find(platform, "MFCreateAttributes", createAttributes);
    Find(platform, "MFCreateMediaType", createMediaType);
    Find(platform, "MFCreateSample", createSample);
    Find(platform, "MFCreateMemoryBuffer", createMemoryBuffer);
    Find(platform, "MFCreateDXGISurfaceBuffer", createDXGISurfaceBuffer);
    Find(platform, "MFCreateDXGIDeviceManager", createDXGIDeviceManager);
    Find(readWrite, "MFCreateSinkWriterFromURL", createSinkWriterFromURL);
    Find(transcoding, "MFTranscodeGetAudioOutputAvailableTypes", getAudioOutputTypes);
  }

  /// Success when every function was found.
  HRESULT result() const { return result_; }

  decltype(&MFStartup) startup = Missing;
  decltype(&MFShutdown) shutdown = Missing;
  decltype(&MFCreateAttributes) createAttributes = Missing;
  decltype(&MFCreateMediaType) createMediaType = Missing;
  decltype(&MFCreateSample) createSample = Missing;
  decltype(&MFCreateMemoryBuffer) createMemoryBuffer = Missing;
  decltype(&MFCreateDXGISurfaceBuffer) createDXGISurfaceBuffer = Missing;
  decltype(&MFCreateDXGIDeviceManager) createDXGIDeviceManager = Missing;
  decltype(&MFCreateSinkWriterFromURL) createSinkWriterFromURL = Missing;
  decltype(&MFTranscodeGetAudioOutputAvailableTypes) getAudioOutputTypes = Missing;

 private:
  HMODULE Load(const wchar_t* name) {
    const HMODULE library = LoadLibraryExW(name, nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    KeepError(library != nullptr);
    return library;
  }

  template <typename Function>
  void Find(HMODULE library, const char* name, Function& function) {
    if (library == nullptr) {
      return;
    }
    void* address = reinterpret_cast<void*>(GetProcAddress(library, name));
    KeepError(address != nullptr);
    if (address != nullptr) {
      function = reinterpret_cast<Function>(address);
    }
  }

  void KeepError(bool found) {
    if (!found && SUCCEEDED(result_)) {
      result_ = HRESULT_FROM_WIN32(GetLastError());
    }
  }

  HRESULT result_ = S_OK;
};

const Functions& Loaded() {
  static const Functions kFunctions;
  return kFunctions;
}

AacType ReadAacType(IMFMediaType& type) {
  AacType read;
  type.GetUINT32(MF_MT_AUDIO_SAMPLES_PER_SECOND, &read.sampleRate);
  type.GetUINT32(MF_MT_AUDIO_NUM_CHANNELS, &read.channels);
  type.GetUINT32(MF_MT_AUDIO_AVG_BYTES_PER_SECOND, &read.bytesPerSecond);
  return read;
}

class System final : public MediaFoundation {
 public:
  HRESULT Startup() override {
    const HRESULT loaded = Loaded().result();
    return FAILED(loaded) ? loaded : Loaded().startup(MF_VERSION, MFSTARTUP_FULL);
  }

  HRESULT Shutdown() override { return Loaded().shutdown(); }

  HRESULT CreateAttributes(IMFAttributes** attributes, UINT32 size) override {
    return Loaded().createAttributes(attributes, size);
  }

  HRESULT CreateMediaType(IMFMediaType** type) override { return Loaded().createMediaType(type); }

  HRESULT CreateSinkWriterFromURL(const wchar_t* url, IMFAttributes* attributes,
                                  IMFSinkWriter** writer) override {
    return Loaded().createSinkWriterFromURL(url, nullptr, attributes, writer);
  }

  HRESULT CreateSample(IMFSample** sample) override { return Loaded().createSample(sample); }

  HRESULT CreateMemoryBuffer(DWORD size, IMFMediaBuffer** buffer) override {
    return Loaded().createMemoryBuffer(size, buffer);
  }

  HRESULT CreateDXGISurfaceBuffer(ID3D11Texture2D* texture, IMFMediaBuffer** buffer) override {
    return Loaded().createDXGISurfaceBuffer(__uuidof(ID3D11Texture2D), texture, 0, FALSE, buffer);
  }

  HRESULT CreateDXGIDeviceManager(UINT* resetToken, IMFDXGIDeviceManager** manager) override {
    return Loaded().createDXGIDeviceManager(resetToken, manager);
  }

  HRESULT ListAacTypes(std::vector<AacType>& types) override {
    // Any encoder that the sink writer may use too: not those that need a key or are for other purposes.
    constexpr DWORD kFlags = (MFT_ENUM_FLAG_ALL & ~MFT_ENUM_FLAG_FIELDOFUSE) | MFT_ENUM_FLAG_SORTANDFILTER;
    ComPtr<IMFCollection> found;
    HRESULT result =
        Given(Loaded().getAudioOutputTypes(MFAudioFormat_AAC, kFlags, nullptr, found.GetAddressOf()), found);
    DWORD count = 0;
    if (SUCCEEDED(result)) {
      result = found->GetElementCount(&count);
    }
    for (DWORD i = 0; SUCCEEDED(result) && i < count; ++i) {
      ComPtr<IUnknown> element;
      ComPtr<IMFMediaType> type;
      result = Given(found->GetElement(i, element.GetAddressOf()), element);
      if (SUCCEEDED(result) && SUCCEEDED(element.As(&type))) {
        types.push_back(ReadAacType(*type.Get()));
      }
    }
    return result;
  }

  HRESULT D3D11CreateDevice(UINT flags, std::span<const D3D_FEATURE_LEVEL> featureLevels,
                            ID3D11Device** device) override {
    return ::D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, flags, featureLevels.data(),
                               static_cast<UINT>(featureLevels.size()), D3D11_SDK_VERSION, device, nullptr,
                               nullptr);
  }
};

}  // namespace

std::unique_ptr<MediaFoundation> SystemMediaFoundation() {
  return std::make_unique<System>();
}

}  // namespace brisolte
