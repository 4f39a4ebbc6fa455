#include "encoder/ffmpeg/video_stream.h"

#include <array>
#include <cstring>
#include <limits>

#include "common/logger.h"
#include "encoder/ffmpeg/chosen_options.h"
#include "encoder/ffmpeg/container_limits.h"
#include "encoder/ffmpeg/encoder_options.h"
#include "encoder/ffmpeg/ffmpeg_log.h"
#include "encoder/ffmpeg/picture_fit.h"
#include "encoder/ffmpeg/pixel_formats.h"
#include "encoder/ffmpeg/planes.h"

namespace brisolte {
namespace {

constexpr AVRational kVideoTimeBase{1, 60'000};
constexpr int kFrameAlignment = 32;
/// HEVC with its configuration in one place, before the pictures. Players of Apple and browsers take no
/// other, and the muxer's own choice is "hev1".
constexpr std::uint32_t kHevcConfiguredOnce = MKTAG('h', 'v', 'c', '1');
constexpr std::uint32_t kLargestInt = std::numeric_limits<int>::max();

bool IsNv12Like(AVPixelFormat format) {
  return format == AV_PIX_FMT_NV12 || format == AV_PIX_FMT_YUV420P;
}

std::string SizeText(PictureSize size) {
  return std::to_string(size.width) + "x" + std::to_string(size.height);
}

int EvenHeight(int height) {
  const int even = height - height % 2;
  if (even != height) {
    Logger::Info("FFmpegEncoder: Adjusting video height to even: " + std::to_string(height) + " -> " +
                 std::to_string(even));
  }
  return even;
}

/// The size that is left when a picture is made smaller.
PictureSize SmallerSize(PictureSize source, PictureSize fitting) {
  Logger::Info("FFmpegEncoder: Making the picture smaller: " + SizeText(source) + " -> " + SizeText(fitting));
  return fitting;
}

/// Rows that end before their neighbour begins, with a distance that FFmpeg can express.
bool HasUsablePitch(const MappedPixels& pixels, std::uint64_t rowBytes) {
  return pixels.rowPitch >= rowBytes && pixels.rowPitch <= kLargestInt;
}

/// The time from one frame to the next in the context's time base; 0 without a frame rate.
std::int64_t OneFrame(const AVCodecContext& context) {
  return context.framerate.num > 0 ? av_rescale_q(1, av_inv_q(context.framerate), context.time_base) : 0;
}

/// What is never written (the end of a row that its width does not fill) must not be chance.
void MakeBlack(AVFrame& frame) {
  for (AVBufferRef* const buffer : frame.buf) {
    if (buffer != nullptr) {
      std::memset(buffer->data, 0, buffer->size);
    }
  }
  std::array<std::ptrdiff_t, 4> strides{};
  for (std::size_t plane = 0; plane < strides.size(); ++plane) {
    strides[plane] = frame.linesize[plane];
  }
  const auto format = static_cast<AVPixelFormat>(frame.format);
  const AVColorRange range = IsFullRangeFormat(format) ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
  av_image_fill_black(frame.data, strides.data(), format, range, frame.width, frame.height);
}

}  // namespace

bool VideoStream::Initialize(OutputFile& file, const CaptureSettings& settings,
                             const RecordingOptions& options, std::uint32_t width, std::uint32_t height) {
  if (width < 1 || height < 1 || width > kLargestInt || height > kLargestInt) {
    Logger::Error("FFmpegEncoder: Invalid video dimensions: " + std::to_string(width) + "x" +
                  std::to_string(height));
    return false;
  }
  const PictureSize source{static_cast<int>(width), static_cast<int>(height)};
  const PictureSize fitting = FitInto(source, options.largestPicture.value_or(source));
  const bool fits = fitting == source;
  const PictureSize encoded =
      fits ? PictureSize{source.width, EvenHeight(source.height)} : SmallerSize(source, fitting);
  // A muxer cannot be rid of a stream again, so a second attempt uses the first one's.
  if (stream_ == nullptr) {
    stream_ = file.AddStream();
  }
  if (stream_ == nullptr || !file.AcceptsStreams()) {
    Logger::Error("FFmpegEncoder: Failed to create video stream");
    return false;
  }
  const AVCodec* const codec = avcodec_find_encoder_by_name(settings.encoderName.c_str());
  if (codec == nullptr) {
    Logger::Error("Encoder " + settings.encoderName + " not found!");
    return false;
  }
  Release();
  makesSmaller_ = !fits;
  if (!OpenEncoder(file.container(), settings, options, *codec, encoded) ||
      !DescribeStream(file.container())) {
    Release();
    return false;
  }
  scaler_.emplace(source, encoded, context_->pix_fmt);
  packet_.reset(av_packet_alloc());
  if (!packet_) {
    Logger::Error("Failed to allocate video packet");
    Release();
    return false;
  }
  Logger::Info("FFmpegEncoder: Successfully initialized " + settings.encoderName + " with pixel format: " +
               PixelFormatName(context_->pix_fmt) + " time_base:" + std::to_string(context_->time_base.num) +
               "/" + std::to_string(context_->time_base.den));
  return true;
}

bool VideoStream::OpenEncoder(const AVOutputFormat& container, const CaptureSettings& settings,
                              const RecordingOptions& options, const AVCodec& codec, PictureSize size) {
  context_.reset(avcodec_alloc_context3(&codec));
  if (!context_) {
    Logger::Error("FFmpegEncoder: Failed to allocate codec context");
    return false;
  }
  context_->codec_id = codec.id;
  context_->codec_type = AVMEDIA_TYPE_VIDEO;
  context_->width = size.width;
  context_->height = size.height;
  context_->time_base = kVideoTimeBase;
  context_->framerate = {settings.frameRate, 1};
  context_->gop_size = settings.frameRate;
  context_->bit_rate = settings.bitrate;
  // Such a container has a place of its own for what configures the decoder. Without the flag encoders put
  // that into the key frames, where not every muxer finds it and not every player looks.
  if ((container.flags & AVFMT_GLOBALHEADER) != 0) {
    context_->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  }
  context_->pix_fmt = SelectPixelFormat(codec);
  if (context_->pix_fmt == AV_PIX_FMT_NONE) {
    Logger::Error("Failed to find suitable pixel format for encoder");
    return false;
  }
  if (!CreateFrame()) {
    return false;
  }
  OptionDictionary entries;
  ApplyEncoderOptions(settings.encoderName, settings.frameRate, *context_, entries);
  AddLogOption(settings.encoderName, entries);
  if (!AddChosenOptions(options.encoderOptions, codec, entries)) {
    return false;
  }
  if (const int result = avcodec_open2(context_.get(), &codec, entries.address()); result < 0) {
    Logger::Error("Failed to open encoder: " + ErrorText(result));
    return false;
  }
  // Some encoders write the frame's own labels into each picture.
  frame_->color_range = context_->color_range;
  frame_->colorspace = context_->colorspace;
  frame_->color_trc = context_->color_trc;
  frame_->color_primaries = context_->color_primaries;
  return true;
}

bool VideoStream::CreateFrame() {
  frame_.reset(av_frame_alloc());
  if (!frame_) {
    Logger::Error("Failed to allocate video frame");
    return false;
  }
  frame_->format = context_->pix_fmt;
  frame_->width = context_->width;
  frame_->height = context_->height;
  if (const int result = av_frame_get_buffer(frame_.get(), kFrameAlignment); result < 0) {
    Logger::Error("Failed to allocate video frame buffer: " + ErrorText(result));
    return false;
  }
  MakeBlack(*frame_);
  return true;
}

bool VideoStream::DescribeStream(const AVOutputFormat& container) {
  if (const int result = avcodec_parameters_from_context(stream_->codecpar, context_.get()); result < 0) {
    Logger::Error("Failed to copy codec parameters to stream: " + ErrorText(result));
    return false;
  }
  if (context_->codec_id == AV_CODEC_ID_HEVC && IsQuickTimeLike(container)) {
    stream_->codecpar->codec_tag = kHevcConfiguredOnce;
  }
  stream_->time_base = context_->time_base;
  av_dict_set(&stream_->metadata, "language", "eng", 0);
  av_dict_set(&stream_->metadata, "handler_name", "VideoHandler", 0);
  return true;
}

void VideoStream::Release() {
  frame_.reset();
  packet_.reset();
  scaler_.reset();
  context_.reset();
  holdsFrames_ = false;
  repeatable_ = false;
}

bool VideoStream::GetPixelFormat() const {
  if (!context_) {
    Logger::Error("FFmpegEncoder: Video codec context is null, cannot get pixel format");
    return false;
  }
  return TakesNv12();
}

bool VideoStream::TakesNv12() const {
  return IsNv12Like(context_->pix_fmt) && !makesSmaller_;
}

bool VideoStream::FillVideoFrame(const VideoFrame& frame) {
  if (!context_ || !frame_ || !frame.mapped || frame.pixels.data == nullptr) {
    Logger::Error("Video frame not initialized");
    return false;
  }
  // The encoder may still hold the buffers with the picture before this one.
  if (const int result = av_frame_make_writable(frame_.get()); result < 0) {
    Logger::Error("Failed to make video frame writable: " + ErrorText(result));
    return false;
  }
  return TakesNv12() ? FillFromNv12(frame.pixels) : FillFromBgra(frame.pixels);
}

bool VideoStream::FillFromNv12(const MappedPixels& pixels) {
  const auto width = static_cast<std::size_t>(frame_->width);
  const auto height = static_cast<std::size_t>(frame_->height);
  if (!HasUsablePitch(pixels, width)) {
    Logger::Error("Video frame has an unusable row pitch: " + std::to_string(pixels.rowPitch));
    return false;
  }
  const auto target = [this](int plane) {
    return TargetPlane{frame_->data[plane], static_cast<std::size_t>(frame_->linesize[plane])};
  };
  const SourcePlane luma{pixels.data, pixels.rowPitch};
  const SourcePlane chroma{pixels.data + pixels.rowPitch * height, pixels.rowPitch};
  CopyPlane(luma, target(0), width, height);
  if (context_->pix_fmt == AV_PIX_FMT_NV12) {
    CopyInterleavedChroma(chroma, target(1), width, height / 2);
  } else {
    SplitInterleavedChroma(chroma, target(1), target(2), width, height / 2);
  }
  return true;
}

bool VideoStream::FillFromBgra(const MappedPixels& pixels) {
  if (!scaler_ || !scaler_->usable()) {
    Logger::Error("Video frame not initialized");
    return false;
  }
  if (!HasUsablePitch(pixels, scaler_->rowBytes())) {
    Logger::Error("Video frame has an unusable row pitch: " + std::to_string(pixels.rowPitch));
    return false;
  }
  return scaler_->Convert(pixels, *frame_);
}

bool VideoStream::EncodeFrame(const VideoFrame& frame, const Enqueue& enqueue) {
  FillPause(frame.timestamp, enqueue);
  if (!FillVideoFrame(frame)) {
    return false;
  }
  const auto pts = timestamps_.Next(frame.timestamp, context_->time_base);
  return pts && EncodeAt(*pts, enqueue);
}

void VideoStream::FillPause(std::int64_t milliseconds, const Enqueue& enqueue) {
  while (repeatable_) {
    const auto pts = timestamps_.NextInPause(milliseconds, context_->time_base);
    if (!pts) {
      return;
    }
    EncodeAt(*pts, enqueue);
  }
}

void VideoStream::ShowUntil(std::int64_t milliseconds, const Enqueue& enqueue) {
  FillPause(milliseconds, enqueue);
  if (!repeatable_) {
    return;
  }
  if (const auto pts = timestamps_.Last(milliseconds, OneFrame(*context_), context_->time_base)) {
    EncodeAt(*pts, enqueue);
  }
}

bool VideoStream::EncodeAt(std::int64_t pts, const Enqueue& enqueue) {
  frame_->pts = pts;
  const int result = avcodec_send_frame(context_.get(), frame_.get());
  repeatable_ = result >= 0;
  if (result < 0) {
    Logger::Error("Failed to send frame to encoder: " + ErrorText(result));
    return false;
  }
  holdsFrames_ = true;
  return ReceivePackets(enqueue);
}

void VideoStream::Drain(const Enqueue& enqueue) {
  if (!context_ || !holdsFrames_) {
    return;
  }
  holdsFrames_ = false;
  repeatable_ = false;
  if (avcodec_send_frame(context_.get(), nullptr) >= 0) {
    ReceivePackets(enqueue);
  }
}

bool VideoStream::ReceivePackets(const Enqueue& enqueue) {
  for (bool queued = false;;) {
    const int result = avcodec_receive_packet(context_.get(), packet_.get());
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
      return queued;
    }
    if (result < 0) {
      Logger::Error("Failed to receive packet from encoder: " + ErrorText(result));
      return false;
    }
    // Players show the last picture for its duration, and leave it out when it has none.
    if (packet_->duration == 0) {
      packet_->duration = OneFrame(*context_);
    }
    av_packet_rescale_ts(packet_.get(), context_->time_base, stream_->time_base);
    packet_->stream_index = stream_->index;
    if (enqueue(*packet_)) {
      queued = true;
    } else {
      Logger::Error("Failed to add video packet to FFmpegWriter");
    }
    av_packet_unref(packet_.get());
  }
}

}  // namespace brisolte
