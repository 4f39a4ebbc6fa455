#include "capture/codec_probe.h"

#include <algorithm>

#include "common/logger.h"
#include "encoder/ffmpeg/ffmpeg_log.h"
#include "encoder/ffmpeg/ffmpeg_types.h"
#include "encoder/ffmpeg/pixel_formats.h"

namespace brisolte {
namespace {

bool IsVideoEncoder(const AVCodec& codec) {
  return av_codec_is_encoder(&codec) != 0 && codec.type == AVMEDIA_TYPE_VIDEO;
}

bool IsHardwareEncoder(const AVCodec& codec) {
  return (codec.capabilities & (AV_CODEC_CAP_HARDWARE | AV_CODEC_CAP_HYBRID)) != 0;
}

CodecDescription Describe(const AVCodec& codec) {
  CodecDescription description;
  description.codecId = static_cast<std::int32_t>(codec.id);
  description.name = codec.name;
  description.description = CodecLabel(codec.long_name, description.name);
  for (const AVPixelFormat format : ListedPixelFormats(codec)) {
    description.pixelFormats.push_back(PixelFormatName(format));
  }
  return description;
}

AVPixelFormat ProbeFormat(const AVCodec& codec) {
  const auto formats = ListedPixelFormats(codec);
  if (std::ranges::find(formats, AV_PIX_FMT_YUV420P) != formats.end()) {
    return AV_PIX_FMT_YUV420P;
  }
  return formats.empty() ? AV_PIX_FMT_NONE : formats.front();
}

bool WorksOnADevice(const AVCodec& codec) {
  int index = 0;
  const AVCodecHWConfig* config = avcodec_get_hw_config(&codec, index);
  while (config != nullptr && (config->methods & AV_CODEC_HW_CONFIG_METHOD_HW_DEVICE_CTX) == 0) {
    config = avcodec_get_hw_config(&codec, ++index);
  }
  return config != nullptr;
}

bool OpensOnThisMachine(const AVCodec& codec) {
  const CodecContextPtr context(avcodec_alloc_context3(&codec));
  if (!context) {
    return false;
  }
  context->width = 640;
  context->height = 480;
  context->time_base = {1, 60'000};
  context->framerate = {60, 1};
  context->pix_fmt = ProbeFormat(codec);
  const std::string name = codec.name;
  if (const int result = avcodec_open2(context.get(), &codec, nullptr); result < 0) {
    Logger::Warning("Hardware codec " + name + " not supported" + ErrorText(result));
    return false;
  }
  Logger::Info("Hardware codec " + name + " supported by device");
  return true;
}

}  // namespace

std::string CodecLabel(const char* longName, const std::string& name) {
  return longName != nullptr && *longName != '\0' ? longName : name;
}

std::vector<CodecDescription> GetSupportedVideoCodecs() {
  LetFFmpegFollowLogLevel();
  Logger::Info("Getting supported video codecs...");
  std::vector<CodecDescription> codecs;
  void* position = nullptr;
  while (const AVCodec* const codec = av_codec_iterate(&position)) {
    if (!IsVideoEncoder(*codec)) {
      continue;
    }
    const bool hardware = IsHardwareEncoder(*codec);
    if (hardware && !(WorksOnADevice(*codec) && OpensOnThisMachine(*codec))) {
      continue;
    }
    codecs.push_back(Describe(*codec));
    codecs.back().isHardwareAccel = hardware;
  }
  if (codecs.empty()) {
    Logger::Warning("No supported video codecs found!");
  } else {
    Logger::Info("Found " + std::to_string(codecs.size()) + " supported video codecs");
  }
  return codecs;
}

}  // namespace brisolte
