// Which options of its row an encoder of the package knows, held against the encoder's own table.

#include <gmock/gmock.h>

extern "C" {
#include <libavutil/opt.h>
}

#include <stdexcept>
#include <string>
#include <vector>

#include "encoder/ffmpeg/encoder_options.h"

namespace brisolte {
namespace {

using ::testing::ElementsAreArray;
using ::testing::IsEmpty;

using Names = std::vector<std::string>;

/// The options that an encoder is given when it is opened, by what it makes of them.
struct Options {
  Names known;
  Names ignored;
  Names refused;  ///< known, but not with this value, which makes opening fail
};

Options OptionsOf(const std::string& encoderName) {
  const AVCodec* const codec = avcodec_find_encoder_by_name(encoderName.c_str());
  if (codec == nullptr) {
    throw std::runtime_error("the package has no encoder " + encoderName);
  }
  const CodecContextPtr context(avcodec_alloc_context3(codec));
  OptionDictionary given;
  ApplyEncoderOptions(encoderName, 30, *context, given);
  Options options;
  const AVDictionaryEntry* entry = nullptr;
  while ((entry = av_dict_get(given.entries(), "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
    const int result = av_opt_set(context.get(), entry->key, entry->value, AV_OPT_SEARCH_CHILDREN);
    Names* names = &options.refused;
    if (result == 0) {
      names = &options.known;
    } else if (result == AVERROR_OPTION_NOT_FOUND) {
      names = &options.ignored;
    }
    names->emplace_back(entry->key);
  }
  return options;
}

struct Row {
  const char* encoder;
  Names known;  ///< beyond the colours, which all know
  Names ignored;
};

class OptionTable : public ::testing::TestWithParam<Row> {};

TEST_P(OptionTable, KnowsTheseOptionsAndRefusesNone) {
  const Row& row = GetParam();
  Names known{"color_range", "colorspace", "color_trc", "color_primaries"};
  known.insert(known.end(), row.known.begin(), row.known.end());
  const Options options = OptionsOf(row.encoder);
  EXPECT_THAT(options.known, ElementsAreArray(known));
  EXPECT_THAT(options.ignored, ElementsAreArray(row.ignored));
  EXPECT_THAT(options.refused, IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    Rows, OptionTable,
    ::testing::Values(
        Row{"h264_nvenc", {"preset", "rc"}, {}}, Row{"hevc_nvenc", {"preset", "rc"}, {}},
        Row{"av1_nvenc", {}, {}},
        Row{"mjpeg_qsv",
            {"async_depth"},
            {"preset", "forced_idr", "low_power", "qsv_device", "look_ahead", "look_ahead_depth"}},
        Row{"mpeg2_qsv", {"preset", "async_depth", "low_power"}, {"gop_size", "b_strategy"}},
        Row{"h264_qsv", {"preset", "low_power"}, {"zerolatency", "tune", "rc_mode"}},
        Row{"hevc_qsv", {"preset", "global_quality", "async_depth"}, {"tune", "rc_mode", "forced-idr"}},
        Row{"vp9_qsv", {}, {}}, Row{"av1_qsv", {}, {}},
        Row{"libx264", {"profile", "preset", "crf", "tune", "sc_threshold", "threads"}, {}},
        Row{"libx265", {"profile", "preset", "tune", "crf", "threads"}, {"scenecut", "bframes"}},
        Row{"mpeg4",
            {"threads", "thread_type", "qmin", "qmax", "qdiff", "qblur", "qcomp", "trellis", "sc_threshold",
             "me_range", "mbd", "flags"},
            {"me_method", "qscale"}}),
    [](const auto& tested) { return std::string(tested.param.encoder); });

}  // namespace
}  // namespace brisolte
