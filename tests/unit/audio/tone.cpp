#include "tone.h"

#include <audioclient.h>
#include <gtest/gtest.h>
#include <mmdeviceapi.h>
#include <wrl/client.h>

#include <chrono>
#include <cmath>
#include <complex>
#include <cstring>
#include <numbers>

#include "audio/co_task_memory.h"
#include "common/com_apartment.h"
#include "common/text.h"

namespace brisolte::testing {
namespace {

using Microsoft::WRL::ComPtr;

constexpr REFERENCE_TIME kBufferDuration = 2'000'000;  // 200 ms

/// A render client on an endpoint that plays 32-bit float samples.
class ToneClient {
 public:
  ToneClient(const std::string& deviceId, double frequency) : frequency_(frequency) {
    ComPtr<IMMDeviceEnumerator> enumerator;
    ComPtr<IMMDevice> device;
    EXPECT_EQ(CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL, IID_PPV_ARGS(&enumerator)),
              S_OK);
    EXPECT_EQ(enumerator->GetDevice(ToWide(deviceId).c_str(), &device), S_OK);
    EXPECT_EQ(device->Activate(__uuidof(IAudioClient), CLSCTX_ALL, nullptr, &client_), S_OK);
    EXPECT_EQ(GetMixFormat(*client_.Get(), format_), S_OK);
    EXPECT_EQ(SampleTypeOf(*ToWaveFormat(format_.get())), SampleType::kFloat32);
    EXPECT_EQ(client_->Initialize(AUDCLNT_SHAREMODE_SHARED, 0, kBufferDuration, 0, format_.get(), nullptr),
              S_OK);
    EXPECT_EQ(client_->GetBufferSize(&bufferFrames_), S_OK);
    EXPECT_EQ(client_->GetService(IID_PPV_ARGS(&renderer_)), S_OK);
    TopUp();
    EXPECT_EQ(client_->Start(), S_OK);
  }

  void TopUp() {
    UINT32 padding = 0;
    EXPECT_EQ(client_->GetCurrentPadding(&padding), S_OK);
    const UINT32 frames = bufferFrames_ - padding;
    BYTE* data = nullptr;
    if (frames == 0 || FAILED(renderer_->GetBuffer(frames, &data))) {
      return;
    }
    for (UINT32 i = 0; i < frames * format_->nChannels; ++i) {
      const double time = static_cast<double>(frame_ + i / format_->nChannels) / format_->nSamplesPerSec;
      const auto value = static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * frequency_ * time));
      std::memcpy(data + i * sizeof value, &value, sizeof value);
    }
    frame_ += frames;
    EXPECT_EQ(renderer_->ReleaseBuffer(frames, 0), S_OK);
  }

 private:
  const double frequency_;
  std::uint64_t frame_ = 0;
  UINT32 bufferFrames_ = 0;
  ComPtr<IAudioClient> client_;
  ComPtr<IAudioRenderClient> renderer_;
  MixFormat format_;
};

}  // namespace

TonePlayer::TonePlayer(const std::string& deviceId, double frequency)
    : thread_([this, deviceId, frequency] {
        const ComApartment com(COINIT_MULTITHREADED);
        ToneClient client(deviceId, frequency);
        started_ = true;
        started_.notify_all();
        while (playing_) {
          client.TopUp();
          std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
      }) {
  started_.wait(false);
}

TonePlayer::~TonePlayer() {
  playing_ = false;
}

double StrengthAt(double frequency, const std::vector<std::uint8_t>& samples, const WaveFormat& format) {
  EXPECT_EQ(SampleTypeOf(format), SampleType::kFloat32);
  const std::size_t frames = samples.size() / format.blockAlign;
  const std::size_t first = frames / 2;
  std::complex<double> sum;
  for (std::size_t frame = first; frame < frames; ++frame) {
    float value = 0;
    std::memcpy(&value, samples.data() + frame * format.blockAlign, sizeof value);
    const double angle = 2 * std::numbers::pi * frequency * static_cast<double>(frame) / format.sampleRate;
    sum += static_cast<double>(value) * std::polar(1.0, angle);
  }
  return 2 * std::abs(sum) / static_cast<double>(frames - first);
}

}  // namespace brisolte::testing
