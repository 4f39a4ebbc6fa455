// Deliveries of sound in any format and of any length, through the encoder into a file in memory.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <filesystem>
#include <vector>

#include "encoder/ffmpeg/ffmpeg_encoder.h"

namespace {

// The least that a fuzzer must not be left to find out: what a device can be at all.
brisolte::WaveFormat SomeFormat(FuzzedDataProvider& data) {
  brisolte::WaveFormat format;
  format.formatTag = data.PickValueInArray<std::uint16_t>({1, 3, 0xFFFE, 0, 6});
  format.channels = data.ConsumeIntegralInRange<std::uint16_t>(0, 9);
  format.sampleRate =
      data.PickValueInArray<std::uint32_t>({0, 8'000, 16'000, 44'100, 48'000, 96'000, 192'000});
  format.bitsPerSample = data.PickValueInArray<std::uint16_t>({0, 8, 12, 16, 24, 32, 64});
  format.floatingPoint = data.ConsumeBool();
  format.blockAlign = data.ConsumeBool()
                          ? static_cast<std::uint16_t>(format.channels * format.bitsPerSample / 8)
                          : data.ConsumeIntegral<std::uint16_t>();
  return format;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace brisolte;
  FuzzedDataProvider data(bytes, size);
  CaptureSettings settings;
  settings.outputFilePath = "/dev/shm/brisolte-fuzz.mp4";
  FFmpegEncoder encoder(settings);
  const WaveFormat microphone = SomeFormat(data);
  encoder.CreateAudioStream(AudioStreamKind::kMicrophone, &microphone);
  encoder.CreateAudioStream(AudioStreamKind::kSpeaker, nullptr);
  encoder.Start();
  while (data.remaining_bytes() > 0) {
    const char* const name = data.PickValueInArray({"microphone", "speaker", "other"});
    // Long deliveries from few bytes of input.
    std::vector<std::uint8_t> samples = data.ConsumeBytes<std::uint8_t>(data.ConsumeIntegralInRange(0, 64));
    samples.resize(samples.size() * data.ConsumeIntegralInRange<std::size_t>(0, 400), 0x3F);
    encoder.ProcessAudioFrame(samples, name);
  }
  encoder.Stop();
  return 0;
}
