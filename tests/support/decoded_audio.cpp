#include "support/decoded_audio.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "encoder/ffmpeg/ffmpeg_types.h"

namespace brisolte::testing {
namespace {

struct InputDeleter {
  void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
using InputPtr = std::unique_ptr<AVFormatContext, InputDeleter>;

int Check(int result, const std::string& step) {
  if (result < 0) {
    throw std::runtime_error(step + ": " + ErrorText(result));
  }
  return result;
}

InputPtr Open(const std::string& path) {
  AVFormatContext* raw = nullptr;
  Check(avformat_open_input(&raw, path.c_str(), nullptr, nullptr), "opening " + path);
  InputPtr input(raw);
  Check(avformat_find_stream_info(input.get(), nullptr), "reading stream information");
  return input;
}

CodecContextPtr OpenDecoder(const AVStream& stream) {
  const AVCodec* const codec = avcodec_find_decoder(stream.codecpar->codec_id);
  if (codec == nullptr) {
    throw std::runtime_error("no decoder");
  }
  CodecContextPtr decoder(avcodec_alloc_context3(codec));
  Check(avcodec_parameters_to_context(decoder.get(), stream.codecpar), "parameters");
  decoder->pkt_timebase = stream.time_base;
  Check(avcodec_open2(decoder.get(), codec, nullptr), "opening the decoder");
  return decoder;
}

std::string TitleOf(const AVStream& stream) {
  for (const char* const key : {"title", "handler_name"}) {
    if (const AVDictionaryEntry* const entry = av_dict_get(stream.metadata, key, nullptr, 0)) {
      return entry->value;
    }
  }
  return {};
}

void AppendSamples(const AVFrame& frame, DecodedAudio& sound) {
  if (frame.format != AV_SAMPLE_FMT_FLTP) {
    throw std::runtime_error("decoded into an unexpected format");
  }
  sound.channels.resize(static_cast<std::size_t>(frame.ch_layout.nb_channels));
  for (std::size_t channel = 0; channel < sound.channels.size(); ++channel) {
    const auto* const samples = reinterpret_cast<const float*>(frame.extended_data[channel]);
    sound.channels[channel].insert(sound.channels[channel].end(), samples, samples + frame.nb_samples);
  }
}

/// Takes everything that the decoder has ready.
void TakeFrames(AVCodecContext& decoder, AVRational timeBase, DecodedAudio& sound) {
  const FramePtr frame(av_frame_alloc());
  for (;;) {
    const int result = avcodec_receive_frame(&decoder, frame.get());
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) {
      return;
    }
    Check(result, "decoding");
    sound.frameSeconds.push_back(static_cast<double>(frame->pts) * av_q2d(timeBase));
    sound.frameBegins.push_back(sound.samples());
    AppendSamples(*frame, sound);
  }
}

DecodedAudio ReadSound(const std::string& path, unsigned index) {
  const InputPtr input = Open(path);
  const AVStream& stream = *input->streams[index];
  const CodecContextPtr decoder = OpenDecoder(stream);
  DecodedAudio sound;
  const PacketPtr packet(av_packet_alloc());
  while (av_read_frame(input.get(), packet.get()) >= 0) {
    if (packet->stream_index == static_cast<int>(index)) {
      sound.packetSeconds.push_back(static_cast<double>(packet->pts) * av_q2d(stream.time_base));
      sound.bytes += static_cast<std::uint64_t>(packet->size);
      sound.keyFrames.push_back((packet->flags & AV_PKT_FLAG_KEY) != 0);
      Check(avcodec_send_packet(decoder.get(), packet.get()), "sending a packet");
      TakeFrames(*decoder, stream.time_base, sound);
    }
    av_packet_unref(packet.get());
  }
  Check(avcodec_send_packet(decoder.get(), nullptr), "ending the decoding");
  TakeFrames(*decoder, stream.time_base, sound);
  sound.codec = avcodec_get_name(stream.codecpar->codec_id);
  sound.title = TitleOf(stream);
  sound.sampleRate = stream.codecpar->sample_rate;
  sound.bitRate = stream.codecpar->bit_rate;
  return sound;
}

}  // namespace

double DecodedAudio::secondsOf(std::size_t index) const {
  const auto frame = std::ranges::upper_bound(frameBegins, index) - frameBegins.begin() - 1;
  const auto at = static_cast<std::size_t>(frame);
  return frameSeconds.at(at) + static_cast<double>(index - frameBegins.at(at)) / sampleRate;
}

std::vector<DecodedAudio> ReadSounds(const std::string& path) {
  const InputPtr input = Open(path);
  std::vector<DecodedAudio> sounds;
  for (unsigned i = 0; i < input->nb_streams; ++i) {
    if (input->streams[i]->codecpar->codec_type == AVMEDIA_TYPE_AUDIO) {
      sounds.push_back(ReadSound(path, i));
    }
  }
  return sounds;
}

unsigned CountStreams(const std::string& path) {
  return Open(path)->nb_streams;
}

}  // namespace brisolte::testing
