#include <filesystem>
#include <stdexcept>

#include "bench.h"
#include "encoder/ffmpeg/ffmpeg_encoder.h"
#include "moving_pictures.h"
#include "resources.h"

namespace brisolte::bench {

Figures MeasureGrowth(const Words& words) {
  constexpr std::uint32_t kWidth = 160;
  constexpr std::uint32_t kHeight = 90;
  constexpr std::size_t kFramesPerMinute = std::size_t{30} * 60;
  const std::size_t minutes = std::stoul(words.at(0));
  const MovingPictures pictures(MovingPictures::Layout::kNv12, kWidth, kHeight, 60);
  CaptureSettings settings;
  settings.outputFilePath = words.at(1);
  FFmpegEncoder encoder(settings);
  if (!encoder.InitializeVideoEncoder(kWidth, kHeight, nullptr) || !encoder.Start()) {
    throw std::runtime_error("the encoder does not start");
  }
  const auto encode = [&](std::size_t first, std::size_t end) {
    for (std::size_t number = first; number < end; ++number) {
      encoder.ProcessFrameAsync(pictures.Frame(number));
    }
  };
  encode(0, kFramesPerMinute);
  const double afterOneMinute = ResidentMiB();
  encode(kFramesPerMinute, minutes * kFramesPerMinute);
  const double atTheEnd = ResidentMiB();
  const double start = WallSeconds();
  encoder.Stop();
  Figures figures;
  figures.Add("stopMilliseconds", 1e3 * (WallSeconds() - start));
  figures.Add("grownMiB", atTheEnd - afterOneMinute);
  figures.Add("fileMiB", static_cast<double>(std::filesystem::file_size(words.at(1))) / (1 << 20));
  return figures;
}

}  // namespace brisolte::bench
