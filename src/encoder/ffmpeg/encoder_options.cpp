#include "encoder/ffmpeg/encoder_options.h"

#include <array>
#include <initializer_list>
#include <string_view>

namespace brisolte {
namespace {

struct Option {
  const char* name;
  const char* value;
};

struct EncoderRow {
  std::string_view encoder;
  std::initializer_list<Option> options;
  void (*adjust)(AVCodecContext& context) = nullptr;
};

void UseNoReferenceFrames(AVCodecContext& context) {
  context.refs = 0;
}

void UseBaselineHuffmanProfile(AVCodecContext& context) {
  // FFmpeg renamed the constant between the versions in use.
  constexpr int kMjpegHuffmanBaselineDct = 192;
  context.profile = kMjpegHuffmanBaselineDct;
}

void UseAllThreadsUnofficially(AVCodecContext& context) {
  context.strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
  context.thread_count = 0;
  context.thread_type = FF_THREAD_FRAME | FF_THREAD_SLICE;
  context.max_b_frames = 0;
  context.refs = 1;
}

// Some names look like slips ("forced_idr" beside "forced-idr", a rate control given twice); each encoder has
// been tuned with its row as it stands, and what it does not know it ignores.
const auto& EncoderRows() {
  static const std::array<EncoderRow, 9> kRows{{
      {"h264_nvenc", {{"preset", "medium"}, {"rc", "vbr"}}, UseNoReferenceFrames},
      {"hevc_nvenc", {{"preset", "medium"}, {"rc", "vbr"}}, UseNoReferenceFrames},
      {"mjpeg_qsv",
       {{"preset", "faster"},
        {"async_depth", "1"},
        {"forced_idr", "1"},
        {"low_power", "1"},
        {"qsv_device", "auto"},
        {"look_ahead", "0"},
        {"look_ahead_depth", "0"}},
       UseBaselineHuffmanProfile},
      {"mpeg2_qsv",
       {{"preset", "veryfast"},
        {"async_depth", "1"},
        {"low_power", "1"},
        {"gop_size", "30"},
        {"b_strategy", "0"}}},
      {"h264_qsv",
       {{"zerolatency", "1"},
        {"preset", "veryfast"},
        {"low_power", "1"},
        {"tune", "zerolatency"},
        {"rc_mode", "vbr"}}},
      {"hevc_qsv",
       {{"preset", "veryfast"},
        {"tune", "zerolatency"},
        {"rc_mode", "cqp"},
        {"global_quality", "28"},
        {"async_depth", "4"},
        {"forced-idr", "1"}}},
      {"libx264",
       {{"profile", "main"},
        {"preset", "veryfast"},
        {"crf", "24"},
        {"tune", "zerolatency"},
        {"sc_threshold", "0"},
        {"threads", "auto"}}},
      {"libx265",
       {{"profile", "main"},
        {"preset", "veryfast"},
        {"tune", "zerolatency"},
        {"crf", "28"},
        {"threads", "auto"},
        {"scenecut", "0"},
        {"bframes", "0"}}},
      {"mpeg4",
       {{"threads", "auto"},
        {"thread_type", "slice+frame"},
        {"qmin", "2"},
        {"qmax", "31"},
        {"qdiff", "3"},
        {"qblur", "0.5"},
        {"qcomp", "0.6"},
        {"trellis", "0"},
        {"sc_threshold", "0"},
        {"me_method", "dia"},
        {"me_range", "16"},
        {"mbd", "0"},
        {"flags", "+qscale"},
        {"qscale", "5"}},
       UseAllThreadsUnofficially},
  }};
  return kRows;
}

void ApplyCommonSettings(AVCodecContext& context, OptionDictionary& options) {
  context.max_b_frames = 0;
  context.has_b_frames = 0;
  context.refs = 1;
  options.Set("color_range", "tv");
  options.Set("colorspace", "bt709");
  options.Set("color_trc", "bt709");
  options.Set("color_primaries", "bt709");
}

bool IsMotionJpeg(const std::string& encoderName) {
  return encoderName == "mjpeg" || encoderName == "mjpeg_qsv" || encoderName == "mjpeg_nvenc";
}

/// Every picture stands alone, and the container wants one tick a frame.
void ApplyMotionJpegSettings(int frameRate, AVCodecContext& context) {
  context.strict_std_compliance = FF_COMPLIANCE_UNOFFICIAL;
  context.gop_size = 1;
  context.time_base = {1, frameRate};
  context.flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  context.flags2 |= AV_CODEC_FLAG2_LOCAL_HEADER;
}

void ApplyRow(const EncoderRow& row, AVCodecContext& context, OptionDictionary& options) {
  for (const Option& option : row.options) {
    options.Set(option.name, option.value);
  }
  if (row.adjust != nullptr) {
    row.adjust(context);
  }
}

}  // namespace

void ApplyEncoderOptions(const std::string& encoderName, int frameRate, AVCodecContext& context,
                         OptionDictionary& options) {
  ApplyCommonSettings(context, options);
  if (IsMotionJpeg(encoderName)) {
    ApplyMotionJpegSettings(frameRate, context);
  }
  for (const EncoderRow& row : EncoderRows()) {
    if (row.encoder == encoderName) {
      ApplyRow(row, context, options);
      return;
    }
  }
}

}  // namespace brisolte
