#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

namespace brisolte::standins {

struct CodecDeleter {
  void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameDeleter {
  void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketDeleter {
  void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
struct ResamplerDeleter {
  void operator()(SwrContext* resampler) const { swr_free(&resampler); }
};
struct SampleQueueDeleter {
  void operator()(AVAudioFifo* queue) const { av_audio_fifo_free(queue); }
};
/// Closes its file, too.
struct OutputDeleter {
  void operator()(AVFormatContext* output) const {
    avio_closep(&output->pb);
    avformat_free_context(output);
  }
};

using CodecPtr = std::unique_ptr<AVCodecContext, CodecDeleter>;
using FramePtr = std::unique_ptr<AVFrame, FrameDeleter>;
using PacketPtr = std::unique_ptr<AVPacket, PacketDeleter>;
using ResamplerPtr = std::unique_ptr<SwrContext, ResamplerDeleter>;
using SampleQueuePtr = std::unique_ptr<AVAudioFifo, SampleQueueDeleter>;
using OutputPtr = std::unique_ptr<AVFormatContext, OutputDeleter>;

}  // namespace brisolte::standins
