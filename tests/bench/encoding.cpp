#include <algorithm>
#include <fstream>
#include <numeric>
#include <stdexcept>

#include "bare_encoding.h"
#include "bench.h"
#include "codec_clock.h"
#include "encoder/ffmpeg/ffmpeg_encoder.h"
#include "moving_pictures.h"
#include "resources.h"

namespace brisolte::bench {
namespace {

constexpr std::size_t kFilm = 60;
// Frames after which an encoder's threads and our queue have what they need.
constexpr std::size_t kWarmUp = 60;

std::uint32_t Number(const std::string& word) {
  return static_cast<std::uint32_t>(std::stoul(word));
}

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// Encodes with the recorder's encoder; adds what a frame costs outside the codec.
void EncodeOurs(const MovingPictures& pictures, const CaptureSettings& settings, std::uint32_t width,
                std::uint32_t height, std::size_t frames, Figures& figures) {
  const double starting = WallSeconds();
  FFmpegEncoder encoder(settings);
  if (!encoder.InitializeVideoEncoder(width, height, nullptr) || !encoder.Start()) {
    throw std::runtime_error("the encoder does not start");
  }
  figures.Add("startSeconds", WallSeconds() - starting);
  std::vector<double> outside;
  outside.reserve(frames);
  std::uint64_t allocations = 0;
  for (std::size_t number = 0; number < frames; ++number) {
    const VideoFrame frame = pictures.Frame(number);
    const double codec = CodecSeconds();
    const std::uint64_t before = Allocations();
    const double start = WallSeconds();
    encoder.ProcessFrameAsync(frame);
    outside.push_back(WallSeconds() - start - (CodecSeconds() - codec));
    allocations += number >= kWarmUp ? Allocations() - before : 0;
  }
  const double stopping = WallSeconds();
  encoder.Stop();
  figures.Add("stopSeconds", WallSeconds() - stopping);
  figures.Add("outsideMicroseconds", 1e6 * Median(outside));
  figures.Add("allocations", static_cast<double>(allocations));
}

}  // namespace

Figures MeasureEncoding(const Words& words) {
  const bool ours = words.at(0) == "ours";
  const std::string& encoderName = words.at(2);
  const std::uint32_t width = Number(words.at(3));
  const std::uint32_t height = Number(words.at(4));
  const std::size_t frames = Number(words.at(5));
  const MovingPictures pictures(LayoutNamed(words.at(1)), width, height, kFilm);
  CaptureSettings settings;
  settings.encoderName = encoderName;
  settings.outputFilePath = words.at(6);

  Figures figures;
  const double cpu = CpuSeconds();
  const double wall = WallSeconds();
  if (ours) {
    EncodeOurs(pictures, settings, width, height, frames, figures);
  } else {
    EncodeBare(pictures, encoderName, static_cast<int>(width), static_cast<int>(height), frames, words.at(6));
  }
  figures.Add("cpuSeconds", CpuSeconds() - cpu);
  figures.Add("wallSeconds", WallSeconds() - wall);
  figures.Add("peakMiB", PeakMiB());
  return figures;
}

Figures WritePictures(const Words& words) {
  const MovingPictures pictures(LayoutNamed(words.at(0)), Number(words.at(1)), Number(words.at(2)), kFilm);
  std::ofstream file(words.at(3), std::ios::binary);
  for (std::size_t number = 0; number < pictures.count(); ++number) {
    file.write(reinterpret_cast<const char*>(pictures.Picture(number)),
               static_cast<std::streamsize>(pictures.pictureBytes()));
  }
  if (!file.flush()) {
    throw std::runtime_error("the pictures cannot be written");
  }
  Figures figures;
  figures.Add("pictures", static_cast<double>(pictures.count()));
  return figures;
}

}  // namespace brisolte::bench
