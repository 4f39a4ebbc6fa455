#include "sound/render_client.h"

#include <mmdeviceapi.h>

#include <cstring>
#include <stdexcept>

#include "audio/audio_devices.h"
#include "common/hresult_failure.h"
#include "common/text.h"

namespace brisolte::testing {
namespace {

using Microsoft::WRL::ComPtr;

// Longer than the programs' threads ever sleep.
constexpr REFERENCE_TIME kBufferDuration = 2'000'000;  // 200 ms

void Check(HRESULT result, const char* step) {
  if (FAILED(result)) {
    throw std::runtime_error(HResultFailure(std::string(step) + ": ", result));
  }
}

ComPtr<IMMDevice> GetDevice(const std::string& deviceId) {
  ComPtr<IMMDeviceEnumerator> enumerator;
  Check(CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL, IID_PPV_ARGS(&enumerator)),
        "MMDeviceEnumerator");
  ComPtr<IMMDevice> device;
  Check(enumerator->GetDevice(ToWide(deviceId).c_str(), &device), "GetDevice");
  return device;
}

}  // namespace

RenderClient::RenderClient(const std::string& deviceId) {
  Check(GetDevice(deviceId)->Activate(__uuidof(IAudioClient), CLSCTX_ALL, nullptr, &client_), "Activate");
  Check(GetMixFormat(*client_.Get(), format_), "GetMixFormat");
  const auto format = ToWaveFormat(format_.get());
  if (!format || SampleTypeOf(*format) != SampleType::kFloat32) {
    throw std::runtime_error("the endpoint does not mix in 32-bit float");
  }
  Check(client_->Initialize(AUDCLNT_SHAREMODE_SHARED, 0, kBufferDuration, 0, format_.get(), nullptr),
        "Initialize");
  Check(client_->GetBufferSize(&bufferFrames_), "GetBufferSize");
  Check(client_->GetService(IID_PPV_ARGS(&renderer_)), "IAudioRenderClient");
  Check(client_->GetService(IID_PPV_ARGS(&clock_)), "IAudioClock");
}

void RenderClient::TopUp(const Waveform& waveform) {
  UINT32 padding = 0;
  Check(client_->GetCurrentPadding(&padding), "GetCurrentPadding");
  const UINT32 frames = bufferFrames_ - padding;
  if (frames > 0) {
    BYTE* data = nullptr;
    Check(renderer_->GetBuffer(frames, &data), "GetBuffer");
    for (UINT32 i = 0; i < frames * format_->nChannels; ++i) {
      const float value = waveform(written_ + i / format_->nChannels);
      std::memcpy(data + i * sizeof value, &value, sizeof value);
    }
    Check(renderer_->ReleaseBuffer(frames, 0), "ReleaseBuffer");
  }
  if (written_ == 0) {
    Check(client_->Start(), "Start");
  }
  written_ += frames;
}

double RenderClient::SecondsHeard() {
  UINT64 frequency = 0;
  UINT64 position = 0;
  Check(clock_->GetFrequency(&frequency), "GetFrequency");
  Check(clock_->GetPosition(&position, nullptr), "GetPosition");
  return static_cast<double>(position) / static_cast<double>(frequency);
}

std::string FindRenderEndpoint(const std::string& name) {
  for (const auto& device : EnumerateAudioDevices(AudioDataFlow::kRender)) {
    if (device.name.find(name) != std::string::npos) {
      return device.id;
    }
  }
  throw std::runtime_error("no render endpoint is called " + name);
}

}  // namespace brisolte::testing
