// Pictures of any size and row pitch, in memory that ends where they do, through the copies and the
// conversion.

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdint>
#include <vector>

#include "encoder/ffmpeg/ffmpeg_encoder.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  using namespace brisolte;
  FuzzedDataProvider data(bytes, size);
  CaptureSettings settings;
  settings.encoderName = data.PickValueInArray({"mpeg4", "mjpeg", "rawvideo", "ffv1"});
  settings.outputFilePath = "/dev/shm/brisolte-fuzz.mov";
  const auto width = data.ConsumeIntegralInRange<std::uint32_t>(0, 80);
  const auto height = data.ConsumeIntegralInRange<std::uint32_t>(0, 80);
  FFmpegEncoder encoder(settings);
  encoder.InitializeVideoEncoder(width, height, nullptr);
  encoder.Start();
  const bool nv12 = encoder.GetPixelFormat();
  const std::uint32_t rowBytes = nv12 ? width : 4 * width;
  for (int frames = 0; frames < 4 && data.remaining_bytes() > 0; ++frames) {
    // What a texture can have: never shorter than its rows. What cannot be is refused by its pitch alone.
    const bool possible = data.ConsumeBool();
    const auto pitch = possible ? rowBytes + data.ConsumeIntegralInRange<std::uint32_t>(0, 40)
                                : data.ConsumeIntegralInRange<std::uint32_t>(0, rowBytes);
    const std::uint32_t rows = nv12 ? height / 2 * 2 + height / 2 : height;
    const std::size_t length = rows == 0 ? 0 : std::size_t{pitch} * (rows - 1) + rowBytes;
    std::vector<std::uint8_t> pixels(length, data.ConsumeIntegral<std::uint8_t>());
    pixels.shrink_to_fit();
    VideoFrame frame;
    frame.pixels = {pixels.empty() ? nullptr : pixels.data(), pitch, static_cast<std::uint32_t>(length)};
    frame.timestamp = data.ConsumeIntegral<std::int64_t>();
    frame.mapped = data.ConsumeBool() || possible;
    encoder.ProcessFrameAsync(frame);
  }
  encoder.Stop();
  return 0;
}
