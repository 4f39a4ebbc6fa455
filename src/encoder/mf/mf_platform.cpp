#include "encoder/mf/mf_platform.h"

#include <d3d11_4.h>
#include <mfapi.h>
#include <mferror.h>

#include <array>

#include "common/full_path.h"
#include "common/given_object.h"
#include "common/hresult_failure.h"
#include "common/logger.h"

namespace brisolte {

using Microsoft::WRL::ComPtr;

namespace {

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

class SystemPlatform final : public MFPlatform {
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

/// Media Foundation asks for devices made for video, which older drivers refuse; with the other flag,
/// captured pictures may be drawn on them. In the order in which they are tried.
constexpr std::array kDeviceFlags{UINT{D3D11_CREATE_DEVICE_BGRA_SUPPORT | D3D11_CREATE_DEVICE_VIDEO_SUPPORT},
                                  UINT{D3D11_CREATE_DEVICE_BGRA_SUPPORT}};
constexpr std::array kFeatureLevels{D3D_FEATURE_LEVEL_11_1, D3D_FEATURE_LEVEL_11_0, D3D_FEATURE_LEVEL_10_1,
                                    D3D_FEATURE_LEVEL_10_0};

HRESULT CreateDevice(MFPlatform& platform, ComPtr<ID3D11Device>& device) {
  HRESULT result = E_FAIL;
  for (const UINT flags : kDeviceFlags) {
    result = platform.D3D11CreateDevice(flags, kFeatureLevels, device.ReleaseAndGetAddressOf());
    if (SUCCEEDED(result)) {
      break;
    }
  }
  return result;
}

HRESULT ProtectFromThreads(ID3D11Device& device) {
  ComPtr<ID3D11DeviceContext> context;
  device.GetImmediateContext(context.GetAddressOf());
  ComPtr<ID3D11Multithread> threads;
  const HRESULT result = context.As(&threads);
  if (SUCCEEDED(result)) {
    threads->SetMultithreadProtected(TRUE);
  }
  return result;
}

}  // namespace

std::unique_ptr<MFPlatform> SystemMFPlatform() {
  return std::make_unique<SystemPlatform>();
}

MFSession::MFSession(MFPlatform& platform)
    : platform_(platform),
      apartment_(COINIT_APARTMENTTHREADED),
      started_(SucceededOrLog(apartment_.result(), "Failed to initialize COM: ") &&
               SucceededOrLog(platform.Startup(), "Failed to initialize Media Foundation: ")) {}

MFSession::~MFSession() {
  if (started_) {
    SucceededOrLog(platform_.Shutdown(), "Failed to shut down Media Foundation: ");
  }
}

bool DeviceManager::Create(MFPlatform& platform) {
  ComPtr<ID3D11Device> device;
  if (!SucceededOrLog(CreateDevice(platform, device), "Failed to create D3D11 device: ")) {
    return false;
  }
  Logger::Info("Creating DXGI device manager...");
  if (!SucceededOrLog(platform.CreateDXGIDeviceManager(&resetToken_, manager_.ReleaseAndGetAddressOf()),
                      "Failed to create DXGI device manager: ")) {
    return false;
  }
  Logger::Info("DXGI device manager created with reset token: " + std::to_string(resetToken_));
  return ResetDevice(*device.Get());
}

bool DeviceManager::ResetDevice(ID3D11Device& device) {
  Logger::Info("Resetting device with token: " + std::to_string(resetToken_));
  if (!SucceededOrLog(ProtectFromThreads(device), "Failed to protect device: ") ||
      !SucceededOrLog(manager_->ResetDevice(&device, resetToken_), "Failed to reset device: ")) {
    return false;
  }
  device_ = &device;
  Logger::Info("Device reset successful");
  return true;
}

void DeviceManager::Release() {
  manager_.Reset();
  device_.Reset();
}

ComPtr<IMFSinkWriter> MakeSinkWriter(MFPlatform& platform, const std::string& path) {
  Logger::Info("Initializing MFEncoder writer...");
  ComPtr<IMFAttributes> attributes;
  ComPtr<IMFSinkWriter> writer;
  const bool made =
      SucceededOrLog(platform.CreateAttributes(attributes.GetAddressOf(), 1),
                     "Failed to create attributes: ") &&
      SucceededOrLog(attributes->SetGUID(MF_TRANSCODE_CONTAINERTYPE, MFTranscodeContainerType_MPEG4),
                     "Failed to set container type: ") &&
      SucceededOrLog(platform.CreateSinkWriterFromURL(FullFilePath(path).c_str(), attributes.Get(),
                                                      writer.GetAddressOf()),
                     "Failed to create sink writer: ");
  if (!made) {
    return nullptr;
  }
  Logger::Info("MFEncoder writer initialized successfully");
  return writer;
}

ComPtr<IMFMediaSink> MediaSinkOf(IMFSinkWriter& writer) {
  ComPtr<IMFMediaSink> sink;
  const HRESULT result =
      writer.GetServiceForStream(static_cast<DWORD>(MF_SINK_WRITER_MEDIASINK), GUID_NULL,
                                 __uuidof(IMFMediaSink), reinterpret_cast<void**>(sink.GetAddressOf()));
  return SUCCEEDED(result) ? sink : nullptr;
}

void CloseFile(IMFMediaSink& sink) {
  const HRESULT result = sink.Shutdown();
  // A failure of the sink writer may have shut it down already.
  if (result != MF_E_SHUTDOWN) {
    SucceededOrLog(result, "Failed to shut down media sink: ");
  }
}

}  // namespace brisolte
