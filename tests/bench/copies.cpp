#include <algorithm>
#include <cstring>
#include <functional>

#include "bench.h"
#include "encoder/ffmpeg/planes.h"
#include "resources.h"

namespace brisolte::bench {
namespace {

/// The shortest of many runs, in microseconds: the others were disturbed.
double Shortest(const std::function<void()>& work) {
  double shortest = 1e9;
  for (int run = 0; run < 300; ++run) {
    const double start = WallSeconds();
    work();
    shortest = std::min(shortest, WallSeconds() - start);
  }
  return 1e6 * shortest;
}

}  // namespace

Figures MeasureCopies(const Words& words) {
  const std::size_t width = std::stoul(words.at(0));
  const std::size_t height = std::stoul(words.at(1));
  const std::size_t luma = width * height;
  // As a mapped texture and a frame of FFmpeg's have them, with room after each row.
  const std::size_t sourcePitch = (width + 255) / 256 * 256;
  const std::size_t targetPitch = (width + 63) / 64 * 64;
  const std::vector<std::uint8_t> source(sourcePitch * height * 3 / 2, 77);
  std::vector<std::uint8_t> target(targetPitch * height * 3 / 2);
  const SourcePlane fromLuma{source.data(), sourcePitch};
  const SourcePlane fromChroma{source.data() + sourcePitch * height, sourcePitch};
  const TargetPlane toLuma{target.data(), targetPitch};
  std::uint8_t* const rest = target.data() + targetPitch * height;

  Figures figures;
  figures.Add("memcpy", Shortest([&] { std::memcpy(target.data(), source.data(), luma * 3 / 2); }));
  figures.Add("nv12", Shortest([&] {
                CopyPlane(fromLuma, toLuma, width, height);
                CopyInterleavedChroma(fromChroma, {rest, targetPitch}, width, height / 2);
              }));
  figures.Add("yuv420p", Shortest([&] {
                CopyPlane(fromLuma, toLuma, width, height);
                SplitInterleavedChroma(fromChroma, {rest, targetPitch / 2},
                                       {rest + targetPitch / 2 * (height / 2), targetPitch / 2}, width,
                                       height / 2);
              }));
  return figures;
}

}  // namespace brisolte::bench
