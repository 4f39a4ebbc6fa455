#include <algorithm>
#include <stdexcept>

#include "bench.h"
#include "encoder/ffmpeg/ffmpeg_encoder.h"
#include "resources.h"
#include "support/tones.h"

namespace brisolte::bench {

Figures MeasureSounds(const Words& words) {
  constexpr std::uint32_t kRate = 48'000;
  constexpr std::size_t kDelivery = kRate / 100;  // what a device delivers at once
  const std::size_t seconds = std::stoul(words.at(0));
  const WaveFormat format = testing::DeviceFormat(SampleType::kFloat32, 2, kRate, true);
  const auto sound = testing::ToneBytes(format, {{440, 0.5}, {1'000, 0.5}}, 0, kRate);
  CaptureSettings settings;
  settings.outputFilePath = words.at(1);
  FFmpegEncoder encoder(settings);
  if (!encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &format) ||
      !encoder.CreateAudioStream(AudioStreamKind::kSpeaker, &format) || !encoder.Start()) {
    throw std::runtime_error("the encoder does not start");
  }
  const double cpu = CpuSeconds();
  double longest = 0;
  double total = 0;
  std::size_t packets = 0;
  for (std::size_t delivery = 0; delivery < seconds * 100; ++delivery) {
    const auto* const from = sound.data() + delivery % 100 * kDelivery * format.blockAlign;
    const std::vector<std::uint8_t> samples(from, from + kDelivery * format.blockAlign);
    for (const char* const name : {"microphone", "speaker"}) {
      const double start = WallSeconds();
      if (encoder.ProcessAudioFrame(samples, name)) {
        const double took = WallSeconds() - start;
        longest = std::max(longest, took);
        total += took;
        ++packets;
      }
    }
  }
  encoder.Stop();
  Figures figures;
  figures.Add("cpuMilliseconds", 1e3 * (CpuSeconds() - cpu) / static_cast<double>(seconds));
  figures.Add("meanMicroseconds", 1e6 * total / static_cast<double>(packets));
  figures.Add("mostMicroseconds", 1e6 * longest);
  return figures;
}

}  // namespace brisolte::bench
