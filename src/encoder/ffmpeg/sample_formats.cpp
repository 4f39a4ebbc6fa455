#include "encoder/ffmpeg/sample_formats.h"

namespace brisolte {

std::span<const AVSampleFormat> ListedSampleFormats(const AVCodec& codec) {
  // The field is deprecated from the version on that has the function.
#if LIBAVCODEC_VERSION_INT >= AV_VERSION_INT(61, 13, 100)
  const void* formats = nullptr;
  int count = 0;
  if (avcodec_get_supported_config(nullptr, &codec, AV_CODEC_CONFIG_SAMPLE_FORMAT, 0, &formats, &count) < 0 ||
      formats == nullptr) {
    return {};
  }
  return {static_cast<const AVSampleFormat*>(formats), static_cast<std::size_t>(count)};
#else
  if (codec.sample_fmts == nullptr) {
    return {};
  }
  const AVSampleFormat* end = codec.sample_fmts;
  while (*end != AV_SAMPLE_FMT_NONE) {
    ++end;
  }
  return {codec.sample_fmts, end};
#endif
}

std::string SampleFormatName(AVSampleFormat format) {
  const char* const name = av_get_sample_fmt_name(format);
  return name != nullptr ? name : "";
}

}  // namespace brisolte
