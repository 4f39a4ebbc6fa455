// A device's description of its format, from its bytes to the conversion that it asks for.

#include <cstdint>
#include <span>

#include "audio/near_silence.h"
#include "audio/wave_format_bytes.h"
#include "audio/wave_format_report.h"
#include "encoder/ffmpeg/audio_input.h"
#include "encoder/ffmpeg/audio_resampler.h"
#include "encoder/ffmpeg/encoded_sound.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace brisolte;
  const auto format = ReadWaveFormat({data, size});
  if (!format) {
    return 0;
  }
  WaveFormatReport("Microphone", &*format);
  std::vector<std::uint8_t> buffer(64);
  FillWithNearSilence(*format, 16, buffer);
  if (const auto input = DescribeAudioInput(&*format, CaptureSettings())) {
    AudioResampler resampler;
    if (resampler.InitializeResampler(*input, ChooseEncodedSound(*input, {}))) {
      // Whatever follows the description is as good as sound.
      const std::span<const std::uint8_t> rest(data, size);
      if (const std::size_t samples = rest.size() / input->blockBytes; samples > 0) {
        resampler.Convert(rest.first(samples * input->blockBytes));
      }
    }
  }
  return 0;
}
