#include "encoder/ffmpeg/encoded_sound.h"

#include <algorithm>
#include <array>
#include <span>

namespace brisolte {
namespace {

/// In bits per second of all channels.
struct BitRates {
  std::int64_t least;
  std::int64_t usual;
  std::int64_t most;
};

constexpr int kStereo = 2;

/// Those of MP3. AAC has higher ones, which not all players have.
constexpr std::array kRates{8'000, 11'025, 12'000, 16'000, 22'050, 24'000, 32'000, 44'100, 48'000};

/// Opus has four lower ones, but is played in this one.
constexpr std::array kOpusRates{48'000};

/// Converters between rates further apart than these take memory without bound.
constexpr int kLowestDeviceRate = 1'000;
constexpr int kHighestDeviceRate = 768'000;

int EncodedChannels(int channels) {
  constexpr int kMostMixed = 8;
  return channels <= kMostMixed ? std::min(channels, kStereo) : channels;
}

int EncodedRate(int rate, std::span<const int> rates) {
  if (rate < kLowestDeviceRate || rate > kHighestDeviceRate) {
    return rate;
  }
  if (const auto next = std::ranges::lower_bound(rates, rate); next != rates.end()) {
    return *next;
  }
  // Whole multiples convert best.
  constexpr int kDiscRate = 44'100;
  return rate % kDiscRate == 0 && std::ranges::binary_search(rates, kDiscRate) ? kDiscRate : rates.back();
}

BitRates BitRatesOf(SoundCodec codec, std::int64_t channels, std::int64_t rate) {
  constexpr std::int64_t kUsualPerChannel = 80'000;
  switch (codec) {
    case SoundCodec::kAac:
      // At most 6144 bits for the 1024 samples of a frame.
      return {8'000 * channels, kUsualPerChannel * channels, 6 * rate * channels};
    case SoundCodec::kOpus:
      return {6'000 * channels, kUsualPerChannel * channels, 256'000 * channels};
    case SoundCodec::kMp3:
      break;
  }
  return {8'000, 128'000, 320'000};
}

EncodedSound Codec(SoundCodec codec) {
  switch (codec) {
    case SoundCodec::kAac:
      return {"AAC", "aac", AV_SAMPLE_FMT_FLTP};
    case SoundCodec::kOpus:
      // FFmpeg takes a step of less than the frame's 960 samples without the encoder's delay of 312 for one
      // backward, and warns of it.
      return {"Opus", "libopus", AV_SAMPLE_FMT_FLT, 960 - 312 + 1};
    case SoundCodec::kMp3:
      break;
  }
  return {"MP3", "libmp3lame", AV_SAMPLE_FMT_FLTP};
}

}  // namespace

EncodedSound ChooseEncodedSound(const AudioInput& input, const SoundOptions& options) {
  EncodedSound sound = Codec(options.codec);
  const std::span<const int> rates =
      options.codec == SoundCodec::kOpus ? std::span<const int>(kOpusRates) : kRates;
  sound.channels = EncodedChannels(input.channels);
  sound.sampleRate = EncodedRate(input.sampleRate, rates);
  const auto [least, usual, most] = BitRatesOf(options.codec, sound.channels, sound.sampleRate);
  const std::int64_t wanted = options.bitRate > 0 ? options.bitRate : usual;
  sound.bitRate = std::max(std::min(wanted, most), least);
  return sound;
}

}  // namespace brisolte
