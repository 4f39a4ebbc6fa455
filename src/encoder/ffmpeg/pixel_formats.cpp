#include "encoder/ffmpeg/pixel_formats.h"

#include <algorithm>

#include "common/logger.h"

namespace brisolte {

std::span<const AVPixelFormat> ListedPixelFormats(const AVCodec& codec) {
  // The field is deprecated from the version on that has the function.
#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(61, 13, 100)
  const void* formats = nullptr;
  int count = 0;
  if (avcodec_get_supported_config(nullptr, &codec, AV_CODEC_CONFIG_PIX_FORMAT, 0, &formats, &count) < 0 ||
      formats == nullptr) {
    return {};
  }
  return {static_cast<const AVPixelFormat*>(formats), static_cast<std::size_t>(count)};
#else
  if (codec.pix_fmts == nullptr) {
    return {};
  }
  const AVPixelFormat* end = codec.pix_fmts;
  while (*end != AV_PIX_FMT_NONE) {
    ++end;
  }
  return {codec.pix_fmts, end};
#endif
}

std::string PixelFormatName(AVPixelFormat format) {
  const char* const name = av_get_pix_fmt_name(format);
  return name != nullptr ? name : "";
}

AVPixelFormat SelectPixelFormat(const AVCodec& codec) {
  const auto formats = ListedPixelFormats(codec);
  const std::string name = codec.name;
  std::string names;
  for (const AVPixelFormat format : formats) {
    names += (names.empty() ? "" : ", ") + PixelFormatName(format);
  }
  Logger::Info("Encoder " + name + " supported pixel formats: " + names);

  if (std::ranges::find(formats, AV_PIX_FMT_NV12) != formats.end()) {
    return AV_PIX_FMT_NV12;
  }
  if (formats.empty()) {
    Logger::Error("No supported pixel formats found for encoder: " + name);
    return AV_PIX_FMT_NONE;
  }
  Logger::Info("Using first pixel format: " + PixelFormatName(formats.front()) + " for encoder: " + name);
  return formats.front();
}

bool IsFullRangeFormat(AVPixelFormat format) {
  switch (format) {
    case AV_PIX_FMT_YUVJ411P:
    case AV_PIX_FMT_YUVJ420P:
    case AV_PIX_FMT_YUVJ422P:
    case AV_PIX_FMT_YUVJ440P:
    case AV_PIX_FMT_YUVJ444P:
      return true;
    default:
      return false;
  }
}

}  // namespace brisolte
