#include "support/decoded_video.h"

#include <array>
#include <span>
#include <stdexcept>

namespace brisolte::testing {
namespace {

struct InputDeleter {
  void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};

int Check(int result, const std::string& step) {
  if (result < 0) {
    throw std::runtime_error(step + ": " + ErrorText(result));
  }
  return result;
}

std::string Metadata(const AVStream& stream, const char* key) {
  const AVDictionaryEntry* const entry = av_dict_get(stream.metadata, key, nullptr, 0);
  return entry != nullptr ? entry->value : "";
}

/// Takes every picture that the decoder has ready.
void TakeFrames(AVCodecContext& decoder, AVRational timeBase, DecodedVideo& video) {
  for (;;) {
    FramePtr frame(av_frame_alloc());
    const int result = avcodec_receive_frame(&decoder, frame.get());
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
      return;
    }
    Check(result, "decoding");
    const double seconds = static_cast<double>(frame->best_effort_timestamp) * av_q2d(timeBase);
    video.frames.push_back({std::move(frame), seconds});
  }
}

CodecContextPtr OpenDecoder(const AVStream& stream) {
  const AVCodec* const codec = avcodec_find_decoder(stream.codecpar->codec_id);
  if (codec == nullptr) {
    throw std::runtime_error("no decoder");
  }
  CodecContextPtr decoder(avcodec_alloc_context3(codec));
  Check(avcodec_parameters_to_context(decoder.get(), stream.codecpar), "parameters");
  Check(avcodec_open2(decoder.get(), codec, nullptr), "opening the decoder");
  return decoder;
}

using InputPtr = std::unique_ptr<AVFormatContext, InputDeleter>;

InputPtr OpenInput(const std::string& path) {
  AVFormatContext* raw = nullptr;
  Check(avformat_open_input(&raw, path.c_str(), nullptr, nullptr), "opening " + path);
  return InputPtr(raw);
}

int VideoIndex(AVFormatContext& input) {
  return Check(av_find_best_stream(&input, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0), "video stream");
}

void Describe(const AVStream& stream, int configuration, DecodedVideo& video) {
  video.codec = avcodec_get_name(stream.codecpar->codec_id);
  video.tag = av_fourcc2str(stream.codecpar->codec_tag);
  video.configurationBytes = configuration;
  video.width = stream.codecpar->width;
  video.height = stream.codecpar->height;
  video.range = stream.codecpar->color_range;
  video.space = stream.codecpar->color_space;
  video.primaries = stream.codecpar->color_primaries;
  video.transfer = stream.codecpar->color_trc;
  video.handlerName = Metadata(stream, "handler_name");
  video.language = Metadata(stream, "language");
}

}  // namespace

Yuv DecodedFrame::At(int x, int y) const {
  const auto* const format = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(frame->format));
  std::array<double, 3> values{};
  for (int component = 0; component < 3; ++component) {
    const bool chroma = component > 0;
    std::uint16_t value = 0;
    std::array<const std::uint8_t*, 4> planes{frame->data[0], frame->data[1], frame->data[2], frame->data[3]};
    av_read_image_line(&value, planes.data(), frame->linesize, format,
                       chroma ? x >> format->log2_chroma_w : x, chroma ? y >> format->log2_chroma_h : y,
                       component, 1, 0);
    values.at(component) = value / static_cast<double>(1 << (format->comp[component].depth - 8));
  }
  return {values[0], values[1], values[2]};
}

DecodedVideo ReadVideo(const std::string& path) {
  const InputPtr input = OpenInput(path);
  // What is in the file itself: FFmpeg makes up for what it lacks as it reads the first pictures.
  std::vector<int> configurations;
  for (const AVStream* const each : std::span(input->streams, input->nb_streams)) {
    configurations.push_back(each->codecpar->extradata_size);
  }
  Check(avformat_find_stream_info(input.get(), nullptr), "reading stream information");
  const int index = VideoIndex(*input);
  const AVStream& stream = *input->streams[index];
  const CodecContextPtr decoder = OpenDecoder(stream);

  DecodedVideo video;
  video.streams = input->nb_streams;
  video.seconds = stream.duration != AV_NOPTS_VALUE
                      ? static_cast<double>(stream.duration) * av_q2d(stream.time_base)
                      : static_cast<double>(input->duration) / AV_TIME_BASE;
  const PacketPtr packet(av_packet_alloc());
  while (av_read_frame(input.get(), packet.get()) >= 0) {
    if (packet->stream_index == index) {
      const double seconds = static_cast<double>(packet->pts) * av_q2d(stream.time_base);
      video.packetSeconds.push_back(seconds);
      if ((packet->flags & AV_PKT_FLAG_KEY) != 0) {
        video.keyFrameSeconds.push_back(seconds);
      }
      Check(avcodec_send_packet(decoder.get(), packet.get()), "sending a packet");
      TakeFrames(*decoder, stream.time_base, video);
    }
    av_packet_unref(packet.get());
  }
  Check(avcodec_send_packet(decoder.get(), nullptr), "ending the decoding");
  TakeFrames(*decoder, stream.time_base, video);
  Describe(stream, configurations.at(static_cast<std::size_t>(index)), video);
  return video;
}

DecodedFrame SeekPicture(const std::string& path, double seconds) {
  const InputPtr input = OpenInput(path);
  Check(avformat_find_stream_info(input.get(), nullptr), "reading stream information");
  const int index = VideoIndex(*input);
  const AVStream& stream = *input->streams[index];
  const CodecContextPtr decoder = OpenDecoder(stream);
  const auto time = static_cast<std::int64_t>(seconds / av_q2d(stream.time_base));
  Check(av_seek_frame(input.get(), index, time, AVSEEK_FLAG_BACKWARD), "seeking");

  DecodedVideo video;
  const PacketPtr packet(av_packet_alloc());
  while (av_read_frame(input.get(), packet.get()) >= 0 && packet->pts <= time) {
    if (packet->stream_index == index) {
      Check(avcodec_send_packet(decoder.get(), packet.get()), "sending a packet");
      TakeFrames(*decoder, stream.time_base, video);
    }
    av_packet_unref(packet.get());
  }
  Check(avcodec_send_packet(decoder.get(), nullptr), "ending the decoding");
  TakeFrames(*decoder, stream.time_base, video);
  if (video.frames.empty()) {
    throw std::runtime_error("nothing is shown");
  }
  return std::move(video.frames.back());
}

}  // namespace brisolte::testing
