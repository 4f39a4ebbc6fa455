#include "encoder/ffmpeg/audio_stream.h"

#include <algorithm>
#include <utility>

#include "common/logger.h"

namespace brisolte {
namespace {

/// Lower rates, those of telephone headsets, are not official in MP4, but players take them.
constexpr int kLowestRateInMp4 = 16'000;

/// Players and editors show the one or the other.
void NameStream(AVStream& stream, const std::string& title) {
  av_dict_set(&stream.metadata, "title", title.c_str(), 0);
  av_dict_set(&stream.metadata, "handler_name", title.c_str(), 0);
}

}  // namespace

AudioStream::AudioStream(std::string name, std::string title, Recording recording)
    : name_(std::move(name)), title_(std::move(title)), recording_(std::move(recording)) {}

bool AudioStream::Create(OutputFile& file, const WaveFormat* format, const CaptureSettings& settings,
                         const SoundOptions& options) {
  const auto input = DescribeAudioInput(format, settings);
  if (!file.initialized() || !input) {
    Logger::Error("Invalid parameters for CreateAudioStream");
    return false;
  }
  if (!file.AcceptsStreams()) {
    Logger::Error("Failed to create audio stream");
    return false;
  }
  // The stream comes after its encoder: it could not be taken out of the file again, and without parameters
  // the file's header would fail.
  const EncodedSound sound = ChooseEncodedSound(*input, options);
  Source source;
  source.pending = PendingSamples(input->blockBytes);
  if (!source.encoder.Open(sound) || !AddStream(file, source.encoder) ||
      !source.resampler.InitializeResampler(*input, sound)) {
    return false;
  }
  if (sound.sampleRate < kLowestRateInMp4) {
    file.AllowUnofficial();
  }
  if (sound.sampleRate != input->sampleRate) {
    Logger::Info("Resampling " + name_ + " from " + std::to_string(input->sampleRate) + " Hz to " +
                 std::to_string(sound.sampleRate) + " Hz, which " + sound.codecName + " has");
  }
  source_ = std::move(source);
  return true;
}

bool AudioStream::AddStream(OutputFile& file, const AudioEncoder& encoder) {
  const AVCodecContext& context = encoder.context();
  if (stream_ == nullptr) {
    stream_ = file.AddStream();
  }
  if (stream_ == nullptr) {
    Logger::Error("Failed to create audio stream");
    return false;
  }
  if (const int result = avcodec_parameters_from_context(stream_->codecpar, &context); result < 0) {
    Logger::Error("Failed to copy audio codec parameters to stream: " + ErrorText(result));
    return false;
  }
  stream_->time_base = context.time_base;
  NameStream(*stream_, title_);
  Logger::Info("Setting as " + name_ + " stream (index=" + std::to_string(stream_->index) + ")");
  return true;
}

bool AudioStream::Process(std::span<const std::uint8_t> bytes) {
  if (!source_) {
    Logger::Error("Audio context not initialized for " + name_);
    return false;
  }
  Source& source = *source_;
  source.pending.Append(bytes);
  source.lastDelivery = recording_.elapsed();
  if (!source.pending.hasChunk()) {
    return false;
  }
  source.pending.ReportBacklog(name_);
  bool encoded = false;
  while (source.pending.hasChunk()) {
    if (!recording_.running()) {
      Logger::Info(name_ + " frame processing interrupted: thread is stopping");
      break;
    }
    encoded = EncodeChunk(source, recording_.elapsed()) || encoded;
  }
  return encoded;
}

bool AudioStream::EncodeChunk(Source& source, std::int64_t milliseconds) {
  if (!QueueAt(source, source.resampler.Convert(source.pending.Take()), milliseconds)) {
    return false;
  }
  bool encoded = true;
  while (encoded && source.encoder.hasFrame()) {
    encoded = EncodeAudioFrame(source);
  }
  return encoded;
}

bool AudioStream::QueueAt(Source& source, const AVFrame* samples, std::int64_t milliseconds) {
  const AVRational timeBase = source.encoder.context().time_base;
  return samples != nullptr &&
         source.encoder.Queue(*samples, av_rescale_q(milliseconds, {1, 1000}, timeBase));
}

bool AudioStream::EncodeAudioFrame(Source& source) {
  if (!recording_.running()) {
    Logger::Info("Skipping frame encoding: audio thread is stopping");
    return false;
  }
  return source.encoder.EncodeFrame([&](AVPacket& packet) { EnqueuePacket(source, packet); });
}

void AudioStream::Drain() {
  if (!source_ || source_->drained) {
    return;
  }
  Source& source = *source_;
  source.drained = true;
  while (source.pending.samples() > 0) {
    QueueAt(source, source.resampler.Convert(source.pending.Take()), source.lastDelivery);
  }
  QueueAt(source, source.resampler.Drain(), source.lastDelivery);
  source.encoder.Drain([&](AVPacket& packet) { EnqueuePacket(source, packet); });
}

void AudioStream::EnqueuePacket(const Source& source, AVPacket& packet) {
  packet.flags |= AV_PKT_FLAG_KEY;
  packet.stream_index = stream_->index;
  av_packet_rescale_ts(&packet, source.encoder.context().time_base, stream_->time_base);
  // The stream's ticks may be as long as a packet, and the muxer refuses two in one.
  packet.pts = std::max(packet.pts, lastPacketTime_ + 1);
  packet.dts = packet.pts;
  lastPacketTime_ = packet.pts;
  if (!recording_.enqueue(packet)) {
    Logger::Error("Failed to add Audio packet to encoder");
  }
}

}  // namespace brisolte
