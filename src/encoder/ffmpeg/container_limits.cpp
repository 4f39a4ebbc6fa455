#include "encoder/ffmpeg/container_limits.h"

#include <algorithm>
#include <span>
#include <string_view>

namespace brisolte {
namespace {

bool IsAudio(const AVStream* stream) {
  return stream->codecpar->codec_type == AVMEDIA_TYPE_AUDIO;
}

std::string WhyCodecIsRefused(const AVFormatContext& format, const AVStream& stream) {
  const AVCodecID codec = stream.codecpar->codec_id;
  if (codec == AV_CODEC_ID_NONE ||
      avformat_query_codec(format.oformat, codec, format.strict_std_compliance) != 0) {
    return {};
  }
  const std::string what = std::string("A ") + format.oformat->name + " file cannot hold " +
                           avcodec_get_name(codec) + (IsAudio(&stream) ? " sound" : " video");
  return what + (IsAudio(&stream) ? "; record without sound or choose another video encoder"
                                  : "; choose another video encoder");
}

}  // namespace

std::string WhyContainerRefuses(const AVFormatContext& format) {
  const std::span<AVStream* const> streams(format.streams, format.nb_streams);
  const auto sounds = std::ranges::count_if(streams, IsAudio);
  if (std::string_view(format.oformat->name) == "mp3" && sounds > 1) {
    return "An mp3 file holds one sound, not " + std::to_string(sounds) +
           "; record either the microphone or the speaker, or record video as well";
  }
  for (const AVStream* const stream : streams) {
    if (const std::string reason = WhyCodecIsRefused(format, *stream); !reason.empty()) {
      return reason;
    }
  }
  return {};
}

bool IsQuickTimeLike(const AVOutputFormat& container) {
  const std::string_view name = container.name;
  return name == "mp4" || name == "mov";
}

}  // namespace brisolte
