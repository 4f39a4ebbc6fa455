#include "encoder/ffmpeg/audio_encoder.h"

#include <string>

#include "common/logger.h"
#include "encoder/ffmpeg/sample_formats.h"

namespace brisolte {
namespace {

constexpr int kFrameSize = 1024;

const AVCodec* FindAudioEncoder(const char* name) {
  const AVCodec* const codec = avcodec_find_encoder_by_name(name);
  if (codec == nullptr) {
    Logger::Error("Could not find Audio encoder");
    return nullptr;
  }
  std::string names;
  for (const AVSampleFormat format : ListedSampleFormats(*codec)) {
    names += " " + SampleFormatName(format);
  }
  Logger::Info("=== AudioCodec Supported format:" + names);
  return codec;
}

void Configure(AVCodecContext& context, const EncodedSound& sound) {
  context.codec_type = AVMEDIA_TYPE_AUDIO;
  context.sample_fmt = sound.sampleFormat;
  context.bit_rate = sound.bitRate;
  context.sample_rate = sound.sampleRate;
  context.time_base = {1, sound.sampleRate};
  context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  context.frame_size = kFrameSize;  // an encoder with a size of its own replaces it
  av_channel_layout_default(&context.ch_layout, sound.channels);
}

int OpenCodec(AVCodecContext& context, const AVCodec& codec) {
  constexpr int kStereo = 2;
  const int result = avcodec_open2(&context, &codec, nullptr);
  // Some encoders take more, without a layout that a player could know.
  return result >= 0 && context.ch_layout.nb_channels > kStereo ? AVERROR(EINVAL) : result;
}

}  // namespace

bool AudioEncoder::Open(const EncodedSound& sound) {
  const AVCodec* const codec = FindAudioEncoder(sound.encoderName);
  if (codec == nullptr) {
    return false;
  }
  context_.reset(avcodec_alloc_context3(codec));
  if (!context_) {
    Logger::Error("Could not allocate audio codec context");
    return false;
  }
  Configure(*context_, sound);
  if (const int result = OpenCodec(*context_, *codec); result < 0) {
    Logger::Error("Could not open audio codec: " + ErrorText(result));
    return false;
  }
  timestamps_ = AudioTimestamps(sound.leastStep);
  frameSize_ = context_->frame_size > 0 ? context_->frame_size : kFrameSize;
  if (!Allocate()) {
    Logger::Error("Could not allocate audio buffers");
    return false;
  }
  return true;
}

bool AudioEncoder::Allocate() {
  packet_.reset(av_packet_alloc());
  frame_.reset(av_frame_alloc());
  queue_.reset(av_audio_fifo_alloc(context_->sample_fmt, context_->ch_layout.nb_channels, frameSize_));
  if (!packet_ || !frame_ || !queue_) {
    return false;
  }
  frame_->format = context_->sample_fmt;
  frame_->sample_rate = context_->sample_rate;
  frame_->nb_samples = frameSize_;
  return av_channel_layout_copy(&frame_->ch_layout, &context_->ch_layout) >= 0 &&
         av_frame_get_buffer(frame_.get(), 0) >= 0;
}

bool AudioEncoder::Queue(const AVFrame& samples, std::int64_t time) {
  if (samples.nb_samples == 0) {
    return true;
  }
  // The planes are only read, but the function's older forms do not say so.
  auto* const planes = reinterpret_cast<void**>(samples.extended_data);
  if (av_audio_fifo_write(queue_.get(), planes, samples.nb_samples) < samples.nb_samples) {
    Logger::Error("Failed to queue audio samples");
    return false;
  }
  timestamps_.Add(time, samples.nb_samples);
  return true;
}

bool AudioEncoder::EncodeFrame(const TakePacket& take) {
  // The encoder may still hold the samples of the frame before this one.
  frame_->nb_samples = frameSize_;
  if (av_frame_make_writable(frame_.get()) < 0) {
    Logger::Error("Failed to make output frame writable");
    return false;
  }
  auto* const planes = reinterpret_cast<void**>(frame_->extended_data);
  const int samples = av_audio_fifo_read(queue_.get(), planes, frameSize_);
  if (samples <= 0) {
    return false;
  }
  frame_->nb_samples = samples;
  frame_->pts = timestamps_.Take(samples);
  if (avcodec_send_frame(context_.get(), frame_.get()) < 0) {
    Logger::Error("Failed to send Audio frame to  encoder");
    return false;
  }
  return ReceivePackets(take);
}

bool AudioEncoder::ReceivePackets(const TakePacket& take) {
  for (;;) {
    const int result = avcodec_receive_packet(context_.get(), packet_.get());
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
      return true;
    }
    if (result < 0) {
      Logger::Error("Failed to receive packet from encoder: " + ErrorText(result));
      return false;
    }
    take(*packet_);
    av_packet_unref(packet_.get());
  }
}

void AudioEncoder::Drain(const TakePacket& take) {
  bool encoding = true;
  while (encoding && av_audio_fifo_size(queue_.get()) > 0) {
    encoding = EncodeFrame(take);
  }
  if (avcodec_send_frame(context_.get(), nullptr) >= 0) {
    ReceivePackets(take);
  }
}

}  // namespace brisolte
