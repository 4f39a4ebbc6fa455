#include "encoder/ffmpeg/audio_resampler.h"

#include <array>
#include <string>

#include "common/logger.h"
#include "encoder/ffmpeg/packed_samples.h"
#include "encoder/ffmpeg/sample_limits.h"

namespace brisolte {
namespace {

AVSampleFormat ConvertibleFormat(SampleType type) {
  switch (type) {
    case SampleType::kUnsigned8:
      return AV_SAMPLE_FMT_U8;
    case SampleType::kSigned16:
      return AV_SAMPLE_FMT_S16;
    case SampleType::kSigned24Packed:  // unpacked first
    case SampleType::kSigned32:
      return AV_SAMPLE_FMT_S32;
    case SampleType::kFloat32:
      return AV_SAMPLE_FMT_FLT;
  }
  return AV_SAMPLE_FMT_NONE;
}

void Configure(SwrContext& resampler, const AudioInput& input, const EncodedSound& output) {
  AVChannelLayout in{};
  AVChannelLayout out{};
  av_channel_layout_default(&in, input.channels);
  av_channel_layout_default(&out, output.channels);
  av_opt_set_chlayout(&resampler, "in_chlayout", &in, 0);
  av_opt_set_chlayout(&resampler, "out_chlayout", &out, 0);
  av_opt_set_int(&resampler, "in_sample_rate", input.sampleRate, 0);
  av_opt_set_int(&resampler, "out_sample_rate", output.sampleRate, 0);
  av_opt_set_sample_fmt(&resampler, "in_sample_fmt", ConvertibleFormat(input.sampleType), 0);
  av_opt_set_sample_fmt(&resampler, "out_sample_fmt", output.sampleFormat, 0);
  // Between floating-point samples FFmpeg adds the channels of surround sound up as they are, up to three
  // times full scale. With this all of them at full scale are full scale together.
  av_opt_set_double(&resampler, "rematrix_maxval", 1, 0);
  av_channel_layout_uninit(&in);
  av_channel_layout_uninit(&out);
}

}  // namespace

bool AudioResampler::InitializeResampler(const AudioInput& input, const EncodedSound& output) {
  input_ = input;
  output_ = output;
  frame_.reset();
  capacity_ = 0;
  resampler_.reset(swr_alloc());
  if (!resampler_) {
    Logger::Error("Failed to allocate audio resampler");
    return false;
  }
  Logger::Info("Initializing audio resampler with channels=" + std::to_string(input.channels) +
               ", sample_rate=" + std::to_string(input.sampleRate) +
               ", bits_per_sample=" + std::to_string(input.bitsPerSample));
  Configure(*resampler_, input, output);
  if (const int result = swr_init(resampler_.get()); result < 0) {
    Logger::Error("Failed to initialize audio resampler, error code: " + std::to_string(result));
    resampler_.reset();
    return false;
  }
  Logger::Info("Audio resampler initialized successfully");
  return true;
}

std::span<const std::uint8_t> AudioResampler::Unpacked(std::span<const std::uint8_t> bytes) {
  if (input_.sampleType != SampleType::kSigned24Packed) {
    return bytes;
  }
  UnpackSigned24(bytes, unpacked_);
  return {reinterpret_cast<const std::uint8_t*>(unpacked_.data()), unpacked_.size() * sizeof(std::int32_t)};
}

bool AudioResampler::MakeRoom(int samples) {
  if (frame_ && capacity_ >= samples) {
    frame_->nb_samples = capacity_;
    if (const int result = av_frame_make_writable(frame_.get()); result < 0) {
      Logger::Error("Failed to make output frame writable");
      return false;
    }
    return true;
  }
  capacity_ = 0;
  frame_.reset(av_frame_alloc());
  if (frame_) {
    frame_->format = output_.sampleFormat;
    frame_->nb_samples = samples;
    frame_->sample_rate = output_.sampleRate;
    av_channel_layout_default(&frame_->ch_layout, output_.channels);
  }
  if (!frame_ || av_frame_get_buffer(frame_.get(), 0) < 0) {
    Logger::Error("Failed to make output frame writable");
    return false;
  }
  capacity_ = samples;
  return true;
}

/// Devices deliver floating point as they please, and the MP3 encoder ends the process when it meets numbers
/// far beyond full scale.
void AudioResampler::LimitSamples() {
  const bool planar = av_sample_fmt_is_planar(output_.sampleFormat) != 0;
  const int planes = planar ? output_.channels : 1;
  const int samples = frame_->nb_samples * (planar ? 1 : output_.channels);
  for (int i = 0; i < planes; ++i) {
    auto* const plane = reinterpret_cast<float*>(frame_->extended_data[i]);
    LimitToFullScale({plane, static_cast<std::size_t>(samples)});
  }
}

AVFrame* AudioResampler::Convert(std::span<const std::uint8_t> bytes) {
  return Convert(Unpacked(bytes).data(), static_cast<int>(bytes.size() / input_.blockBytes));
}

AVFrame* AudioResampler::Drain() {
  return output_.sampleRate != input_.sampleRate ? Convert(nullptr, 0) : nullptr;
}

AVFrame* AudioResampler::Convert(const std::uint8_t* unpacked, int samples) {
  const int room = swr_get_out_samples(resampler_.get(), samples);
  if (room < 0) {
    Logger::Error("Failed to get output sample count: " + ErrorText(room));
    return nullptr;
  }
  if (!MakeRoom(room)) {
    return nullptr;
  }
  std::array input{unpacked};
  const int converted = swr_convert(resampler_.get(), frame_->extended_data, room,
                                    unpacked != nullptr ? input.data() : nullptr, samples);
  if (converted < 0) {
    Logger::Error("Audio resampling failed: " + ErrorText(converted));
    return nullptr;
  }
  frame_->nb_samples = converted;
  LimitSamples();
  return frame_.get();
}

}  // namespace brisolte
