#pragma once

#include <cstddef>
#include <cstdint>

namespace brisolte {

/// Media Foundation counts time in units of 100 nanoseconds.
inline constexpr std::int64_t kUnitsPerMillisecond = 10'000;
inline constexpr std::int64_t kUnitsPerSecond = 10'000'000;

/// A capture's milliseconds as a sample's time or duration.
constexpr std::int64_t SampleTime(std::int64_t milliseconds) {
  return milliseconds * kUnitsPerMillisecond;
}

/// How long `frames` samples of all channels last, cut to a whole unit. `sampleRate` (Hz) is not 0. Whole
/// seconds are taken apart, so that no length a recording can have overflows.
constexpr std::int64_t AudioSampleTime(std::int64_t frames, std::uint32_t sampleRate) {
  const std::int64_t seconds = frames / sampleRate;
  return seconds * kUnitsPerSecond + frames % sampleRate * kUnitsPerSecond / sampleRate;
}

/// Bytes of the 40 ms of sound that make one sample. The byte rate is cut to thousands first.
constexpr std::size_t AudioChunkBytes(std::uint32_t bytesPerSecond) {
  return std::size_t{bytesPerSecond / 1000} * 40;
}

/// Bytes of an NV12 picture of this even size: a byte of luma a pixel, and half as much colour.
constexpr std::uint64_t Nv12Bytes(std::uint32_t width, std::uint32_t height) {
  return std::uint64_t{width} * height * 3 / 2;
}

}  // namespace brisolte
