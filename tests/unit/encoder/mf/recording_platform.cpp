#include "mf/recording_platform.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/hresult_failure.h"
#include "common/text.h"
#include "mf/media_proxies.h"
#include "mf/recording_sink_writer.h"

namespace brisolte::testing {
namespace {

using Microsoft::WRL::ComPtr;

class RecordingPlatform final : public MFPlatform {
 public:
  explicit RecordingPlatform(MediaStage& stage) : stage_(stage) {}

  HRESULT Startup() override {
    return stage_.Call("MFStartup", "", [&] { return system_->Startup(); });
  }

  HRESULT Shutdown() override {
    return stage_.Call("MFShutdown", "", [&] { return system_->Shutdown(); });
  }

  HRESULT CreateAttributes(IMFAttributes** attributes, UINT32 size) override {
    return stage_.Call("MFCreateAttributes", "for " + std::to_string(size), [&] {
      return Wrap<AttributesProxy<IMFAttributes>>(
          attributes, [&](IMFAttributes** real) { return system_->CreateAttributes(real, size); });
    });
  }

  HRESULT CreateMediaType(IMFMediaType** type) override {
    return stage_.Call("MFCreateMediaType", "", [&] {
      return Wrap<MediaTypeProxy>(type, [&](IMFMediaType** real) { return system_->CreateMediaType(real); });
    });
  }

  HRESULT CreateSinkWriterFromURL(const wchar_t* url, IMFAttributes* attributes,
                                  IMFSinkWriter** writer) override {
    const std::string arguments = ToUtf8(url) + ", " + AttributesText(*attributes);
    return stage_.Call("MFCreateSinkWriterFromURL", arguments, [&] {
      *writer = MakeRecordingSinkWriter(stage_).Detach();
      return S_OK;
    });
  }

  HRESULT CreateSample(IMFSample** sample) override {
    return stage_.Call("MFCreateSample", "", [&] {
      return Wrap<SampleProxy>(sample, [&](IMFSample** real) { return system_->CreateSample(real); });
    });
  }

  HRESULT CreateMemoryBuffer(DWORD size, IMFMediaBuffer** buffer) override {
    return stage_.Call("MFCreateMemoryBuffer", std::to_string(size), [&] {
      return Wrap<BufferProxy>(
          buffer, [&](IMFMediaBuffer** real) { return system_->CreateMemoryBuffer(size, real); });
    });
  }

  HRESULT CreateDXGISurfaceBuffer(ID3D11Texture2D* texture, IMFMediaBuffer** buffer) override {
    stage_.AddTexture(texture);
    return stage_.Call("MFCreateDXGISurfaceBuffer", "the frame's texture", [&] {
      return Wrap<BufferProxy>(
          buffer, [&](IMFMediaBuffer** real) { return system_->CreateDXGISurfaceBuffer(texture, real); });
    });
  }

  HRESULT CreateDXGIDeviceManager(UINT* resetToken, IMFDXGIDeviceManager** manager) override {
    return stage_.Call("MFCreateDXGIDeviceManager", "", [&] {
      return Wrap<DeviceManagerProxy>(manager, [&](IMFDXGIDeviceManager** real) {
        return system_->CreateDXGIDeviceManager(resetToken, real);
      });
    });
  }

  /// What the documentation of the system's encoder lists.
  HRESULT ListAacTypes(std::vector<AacType>& types) override {
    return stage_.Call("MFTranscodeGetAudioOutputAvailableTypes", "AAC", [&] {
      for (const std::uint32_t rate : {44'100U, 48'000U}) {
        for (const std::uint32_t bytes : {12'000U, 16'000U, 20'000U, 24'000U}) {
          types.insert(types.end(), {{rate, 1, bytes}, {rate, 2, bytes}, {rate, 6, 6 * bytes}});
        }
      }
      return S_OK;
    });
  }

  HRESULT D3D11CreateDevice(UINT flags, std::span<const D3D_FEATURE_LEVEL> featureLevels,
                            ID3D11Device** device) override {
    std::string arguments = "hardware, flags " + HexadecimalCode(flags) + ", feature levels";
    for (const D3D_FEATURE_LEVEL level : featureLevels) {
      arguments += " " + HexadecimalCode(level);
    }
    return stage_.Call("D3D11CreateDevice", arguments, [&] {
      const HRESULT result = system_->D3D11CreateDevice(flags, featureLevels, device);
      stage_.SetOwnDevice(SUCCEEDED(result) ? *device : nullptr);
      return result;
    });
  }

 private:
  /// What `create` makes of the system's, behind a proxy.
  template <typename Proxy, typename Interface, typename Create>
  HRESULT Wrap(Interface** result, Create create) {
    ComPtr<Interface> real;
    const HRESULT created = create(real.GetAddressOf());
    if (SUCCEEDED(created)) {
      *result = standins::Make<Proxy>(stage_, real).Detach();
    }
    return created;
  }

  MediaStage& stage_;
  const std::unique_ptr<MFPlatform> system_ = SystemMFPlatform();
};

}  // namespace

std::unique_ptr<MFPlatform> MakeRecordingPlatform(MediaStage& stage) {
  return std::make_unique<RecordingPlatform>(stage);
}

}  // namespace brisolte::testing
