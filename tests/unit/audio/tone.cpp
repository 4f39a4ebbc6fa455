#include "tone.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <complex>
#include <cstring>
#include <functional>
#include <numbers>
#include <stdexcept>

#include "common/com_apartment.h"
#include "sound/render_client.h"

namespace brisolte::testing {
namespace {

void PlayTone(const std::string& deviceId, double frequency, const std::atomic<bool>& playing,
              const std::function<void()>& started) {
  RenderClient client(deviceId);
  const auto waveform = [&](std::uint64_t sample) {
    const double time = static_cast<double>(sample) / client.rate();
    return static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * frequency * time));
  };
  client.TopUp(waveform);
  started();
  while (playing) {
    client.TopUp(waveform);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

}  // namespace

TonePlayer::TonePlayer(const std::string& deviceId, double frequency)
    : thread_([this, deviceId, frequency] {
        const ComApartment com(COINIT_MULTITHREADED);
        const auto started = [this] {
          started_ = true;
          started_.notify_all();
        };
        try {
          PlayTone(deviceId, frequency, playing_, started);
        } catch (const std::runtime_error& error) {
          ADD_FAILURE() << error.what();
          started();
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
