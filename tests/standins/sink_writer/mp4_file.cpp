#include "sink_writer/mp4_file.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace brisolte::standins {
namespace {

constexpr AVRational kSampleTime{1, 10'000'000};

AVSampleFormat FormatOf(const AudioTrackType& type) {
  if (type.floatingPoint) {
    return type.bitsPerSample == 32 ? AV_SAMPLE_FMT_FLT : AV_SAMPLE_FMT_NONE;
  }
  switch (type.bitsPerSample) {
    case 8:
      return AV_SAMPLE_FMT_U8;
    case 16:
      return AV_SAMPLE_FMT_S16;
    case 24:  // unpacked first
    case 32:
      return AV_SAMPLE_FMT_S32;
    default:
      return AV_SAMPLE_FMT_NONE;
  }
}

/// Copies a picture into a frame of NV12 or, with its colour taken apart, of planar YUV.
void CopyPicture(const Nv12Picture& picture, AVFrame& frame) {
  const auto row = [&picture](int number) { return picture.data + std::ptrdiff_t{number} * picture.pitch; };
  for (int y = 0; y < frame.height; ++y) {
    std::memcpy(frame.data[0] + std::ptrdiff_t{y} * frame.linesize[0], row(y),
                static_cast<std::size_t>(frame.width));
  }
  for (int y = 0; y < frame.height / 2; ++y) {
    const std::uint8_t* const colour = row(frame.height + y);
    if (frame.format == AV_PIX_FMT_NV12) {
      std::memcpy(frame.data[1] + std::ptrdiff_t{y} * frame.linesize[1], colour,
                  static_cast<std::size_t>(frame.width));
      continue;
    }
    for (int x = 0; x < frame.width / 2; ++x) {
      frame.data[1][std::ptrdiff_t{y} * frame.linesize[1] + x] = colour[2 * x];
      frame.data[2][std::ptrdiff_t{y} * frame.linesize[2] + x] = colour[2 * x + 1];
    }
  }
}

std::vector<std::int32_t> Unpacked24(std::span<const std::uint8_t> samples) {
  std::vector<std::int32_t> unpacked(samples.size() / 3);
  for (std::size_t i = 0; i < unpacked.size(); ++i) {
    const std::uint8_t* const bytes = &samples[3 * i];
    unpacked[i] = static_cast<std::int32_t>(std::uint32_t{bytes[0]} << 8 | std::uint32_t{bytes[1]} << 16 |
                                            std::uint32_t{bytes[2]} << 24);
  }
  return unpacked;
}

}  // namespace

bool Mp4Track::Open(AVFormatContext& file, const AVCodec* codec, CodecPtr context) {
  context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  stream_ = avformat_new_stream(&file, nullptr);
  if (stream_ == nullptr || avcodec_open2(context.get(), codec, nullptr) < 0 ||
      avcodec_parameters_from_context(stream_->codecpar, context.get()) < 0) {
    return false;
  }
  if (context->codec_id == AV_CODEC_ID_HEVC) {
    stream_->codecpar->codec_tag = MKTAG('h', 'v', 'c', '1');
  }
  stream_->time_base = context->time_base;
  stream_->avg_frame_rate = context->framerate;
  file_ = &file;
  context_ = std::move(context);
  return true;
}

bool Mp4Track::Encode(const AVFrame* frame) {
  if (avcodec_send_frame(context_.get(), frame) < 0) {
    return false;
  }
  const PacketPtr packet(av_packet_alloc());
  while (avcodec_receive_packet(context_.get(), packet.get()) >= 0) {
    packet->stream_index = stream_->index;
    av_packet_rescale_ts(packet.get(), context_->time_base, stream_->time_base);
    if (av_interleaved_write_frame(file_, packet.get()) < 0) {
      return false;
    }
  }
  return true;
}

bool Mp4Track::Finish() {
  return FlushInput() && Encode(nullptr);
}

bool VideoTrack::Open(AVFormatContext& file, const VideoTrackType& type) {
  const AVCodec* const codec = avcodec_find_encoder_by_name(type.hevc ? "libx265" : "libx264");
  CodecPtr context(avcodec_alloc_context3(codec));
  context->width = type.width;
  context->height = type.height;
  context->pix_fmt = type.hevc ? AV_PIX_FMT_YUV420P : AV_PIX_FMT_NV12;
  context->time_base = kSampleTime;
  context->framerate = {type.frameRate, 1};
  context->gop_size = type.frameRate;
  context->max_b_frames = 0;
  context->bit_rate = type.bitrate;
  av_opt_set(context->priv_data, "preset", "ultrafast", 0);
  av_opt_set(context->priv_data, "tune", "zerolatency", 0);
  if (type.hevc) {
    // On this thread alone: while it starts a thread for each processor, a recording on a busy machine loses
    // sound.
    av_opt_set(context->priv_data, "x265-params", "log-level=none:pools=none:frame-threads=1", 0);
  }
  if (!Mp4Track::Open(file, codec, std::move(context))) {
    return false;
  }
  frame_.reset(av_frame_alloc());
  frame_->format = this->context().pix_fmt;
  frame_->width = type.width;
  frame_->height = type.height;
  return av_frame_get_buffer(frame_.get(), 0) >= 0;
}

bool VideoTrack::Write(const Nv12Picture& picture, std::int64_t time) {
  if (time <= lastTime_) {
    return true;
  }
  lastTime_ = time;
  if (av_frame_make_writable(frame_.get()) < 0) {
    return false;
  }
  CopyPicture(picture, *frame_);
  frame_->pts = time;
  frame_->duration = av_rescale_q(1, av_inv_q(context().framerate), kSampleTime);
  return Encode(frame_.get());
}

bool AudioTrack::Open(AVFormatContext& file, const AudioTrackType& type) {
  const AVCodec* const codec = avcodec_find_encoder(AV_CODEC_ID_AAC);
  CodecPtr made(avcodec_alloc_context3(codec));
  made->sample_fmt = AV_SAMPLE_FMT_FLTP;
  made->sample_rate = type.rate;
  made->bit_rate = type.bitrate;
  made->time_base = {1, type.rate};
  av_channel_layout_default(&made->ch_layout, type.channels);
  // Its usual search takes more time than the pictures do.
  av_opt_set(made->priv_data, "aac_coder", "fast", 0);
  if (!Mp4Track::Open(file, codec, std::move(made))) {
    return false;
  }
  AVChannelLayout input{};
  av_channel_layout_default(&input, type.inputChannels);
  SwrContext* resampler = nullptr;
  swr_alloc_set_opts2(&resampler, &context().ch_layout, AV_SAMPLE_FMT_FLTP, type.rate, &input, FormatOf(type),
                      type.inputRate, 0, nullptr);
  resampler_.reset(resampler);
  packed24_ = !type.floatingPoint && type.bitsPerSample == 24;
  blockBytes_ =
      static_cast<std::size_t>(type.inputChannels) * static_cast<std::size_t>(type.bitsPerSample) / 8;
  queue_.reset(av_audio_fifo_alloc(AV_SAMPLE_FMT_FLTP, type.channels, context().frame_size));
  frame_.reset(av_frame_alloc());
  // With this all channels at full scale are full scale together; otherwise surround sound clips as stereo.
  return resampler_ && av_opt_set_double(resampler_.get(), "rematrix_maxval", 1, 0) >= 0 &&
         swr_init(resampler_.get()) >= 0 && queue_ && frame_;
}

bool AudioTrack::Write(std::span<const std::uint8_t> samples) {
  const int count = static_cast<int>(samples.size() / blockBytes_);
  if (packed24_) {
    const auto unpacked = Unpacked24(samples);
    return Convert(reinterpret_cast<const std::uint8_t*>(unpacked.data()), count) && EncodeQueued(false);
  }
  return Convert(samples.data(), count) && EncodeQueued(false);
}

bool AudioTrack::FlushInput() {
  return Convert(nullptr, 0) && EncodeQueued(true);
}

bool AudioTrack::Convert(const std::uint8_t* samples, int count) {
  const int room = std::max(swr_get_out_samples(resampler_.get(), count), 1);
  const FramePtr converted(av_frame_alloc());
  converted->format = AV_SAMPLE_FMT_FLTP;
  converted->nb_samples = room;
  if (av_channel_layout_copy(&converted->ch_layout, &context().ch_layout) < 0 ||
      av_frame_get_buffer(converted.get(), 0) < 0) {
    return false;
  }
  std::array input{samples};
  const int made = swr_convert(resampler_.get(), converted->extended_data, room,
                               samples != nullptr ? input.data() : nullptr, count);
  return made >= 0 &&
         av_audio_fifo_write(queue_.get(), reinterpret_cast<void**>(converted->extended_data), made) == made;
}

bool AudioTrack::EncodeQueued(bool all) {
  const int size = context().frame_size;
  while (av_audio_fifo_size(queue_.get()) >= size || (all && av_audio_fifo_size(queue_.get()) > 0)) {
    av_frame_unref(frame_.get());
    frame_->format = AV_SAMPLE_FMT_FLTP;
    frame_->sample_rate = context().sample_rate;
    frame_->nb_samples = std::min(size, av_audio_fifo_size(queue_.get()));
    frame_->pts = encoded_;
    if (av_channel_layout_copy(&frame_->ch_layout, &context().ch_layout) < 0 ||
        av_frame_get_buffer(frame_.get(), 0) < 0 ||
        av_audio_fifo_read(queue_.get(), reinterpret_cast<void**>(frame_->extended_data),
                           frame_->nb_samples) < 0) {
      return false;
    }
    encoded_ += frame_->nb_samples;
    if (!Encode(frame_.get())) {
      return false;
    }
  }
  return true;
}

bool Mp4File::Open(const std::string& path) {
  // Standard error belongs to the program.
  av_log_set_level(AV_LOG_QUIET);
  AVFormatContext* made = nullptr;
  avformat_alloc_output_context2(&made, nullptr, "mp4", nullptr);
  file_.reset(made);
  return file_ && avio_open(&file_->pb, path.c_str(), AVIO_FLAG_WRITE) >= 0;
}

bool Mp4File::Begin() {
  return file_ && avformat_write_header(file_.get(), nullptr) >= 0;
}

bool Mp4File::Finish() {
  const bool encoded = std::ranges::all_of(tracks_, [](const auto& track) { return track->Finish(); });
  const bool finished = file_ && av_write_trailer(file_.get()) >= 0;
  Close();
  return encoded && finished;
}

}  // namespace brisolte::standins
