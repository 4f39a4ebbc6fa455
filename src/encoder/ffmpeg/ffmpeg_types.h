#pragma once

#include <memory>
#include <string>

#include "encoder/ffmpeg/ffmpeg.h"

namespace brisolte {

/// Closes the output, if one is open, and frees the context with everything it owns.
struct FormatContextDeleter {
  void operator()(AVFormatContext* context) const {
    if (context->oformat != nullptr && (context->oformat->flags & AVFMT_NOFILE) == 0) {
      avio_closep(&context->pb);
    }
    avformat_free_context(context);
  }
};
struct CodecContextDeleter {
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameDeleter {
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketDeleter {
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct ScalerDeleter {
  void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
struct ResamplerDeleter {
  void operator()(SwrContext* resampler) const { swr_free(&resampler); }
};
struct AudioFifoDeleter {
  void operator()(AVAudioFifo* fifo) const { av_audio_fifo_free(fifo); }
};

using FormatContextPtr = std::unique_ptr<AVFormatContext, FormatContextDeleter>;
using CodecContextPtr = std::unique_ptr<AVCodecContext, CodecContextDeleter>;
using FramePtr = std::unique_ptr<AVFrame, FrameDeleter>;
using PacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;
using ScalerPtr = std::unique_ptr<SwsContext, ScalerDeleter>;
using ResamplerPtr = std::unique_ptr<SwrContext, ResamplerDeleter>;
using AudioFifoPtr = std::unique_ptr<AVAudioFifo, AudioFifoDeleter>;

/// Options on their way into FFmpeg, which takes out of them what it knows.
class OptionDictionary {
 public:
  OptionDictionary() = default;
  OptionDictionary(const OptionDictionary&) = delete;
  OptionDictionary& operator=(const OptionDictionary&) = delete;
  ~OptionDictionary() { av_dict_free(&entries_); }

  void Set(const char* name, const char* value) { av_dict_set(&entries_, name, value, 0); }

  /// For the calls that consume options.
  AVDictionary** address() { return &entries_; }

  const AVDictionary* entries() const { return entries_; }

 private:
  AVDictionary* entries_ = nullptr;
};

/// FFmpeg's text for one of its error codes.
std::string ErrorText(int code);

}  // namespace brisolte
