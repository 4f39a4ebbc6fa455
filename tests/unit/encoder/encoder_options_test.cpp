#include "encoder/ffmpeg/encoder_options.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace brisolte {
namespace {

using ::testing::ElementsAreArray;

using Texts = std::vector<std::string>;

/// What the options make of a fresh context and an empty dictionary.
struct Applied {
  CodecContextPtr context{avcodec_alloc_context3(nullptr)};
  Texts options;
};

Applied Apply(const std::string& encoderName) {
  Applied applied;
  applied.context->time_base = {1, 60'000};
  applied.context->gop_size = 25;
  applied.context->max_b_frames = 7;
  applied.context->refs = 7;
  OptionDictionary options;
  ApplyEncoderOptions(encoderName, 25, *applied.context, options);
  const AVDictionaryEntry* entry = nullptr;
  while ((entry = av_dict_get(options.entries(), "", entry, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
    applied.options.push_back(std::string(entry->key) + "=" + entry->value);
  }
  return applied;
}

const Texts kCommon{"color_range=tv", "colorspace=bt709", "color_trc=bt709", "color_primaries=bt709"};

Texts CommonAnd(const Texts& more) {
  Texts all = kCommon;
  all.insert(all.end(), more.begin(), more.end());
  return all;
}

TEST(EncoderOptions, AreTheCommonOnesForEncodersWithoutARow) {
  for (const char* const name : {"libvpx", "libvpx-vp9", "prores_ks", "av1_nvenc", "LIBX264", ""}) {
    const Applied applied = Apply(name);
    EXPECT_THAT(applied.options, ElementsAreArray(kCommon)) << name;
    EXPECT_EQ(applied.context->max_b_frames, 0);
    EXPECT_EQ(applied.context->has_b_frames, 0);
    EXPECT_EQ(applied.context->refs, 1);
    EXPECT_EQ(applied.context->gop_size, 25);
    EXPECT_EQ(av_cmp_q(applied.context->time_base, {1, 60'000}), 0);
    EXPECT_EQ(applied.context->flags & AV_CODEC_FLAG_GLOBAL_HEADER, 0);
  }
}

TEST(EncoderOptions, OfNvencEncoders) {
  for (const char* const name : {"h264_nvenc", "hevc_nvenc"}) {
    const Applied applied = Apply(name);
    EXPECT_THAT(applied.options, ElementsAreArray(CommonAnd({"preset=medium", "rc=vbr"})));
    EXPECT_EQ(applied.context->refs, 0);
  }
}

TEST(EncoderOptions, OfMotionJpegEncoders) {
  for (const char* const name : {"mjpeg", "mjpeg_qsv", "mjpeg_nvenc"}) {
    const Applied applied = Apply(name);
    EXPECT_EQ(applied.context->strict_std_compliance, -1);
    EXPECT_EQ(applied.context->gop_size, 1);
    EXPECT_EQ(av_cmp_q(applied.context->time_base, {1, 25}), 0);
    EXPECT_NE(applied.context->flags & AV_CODEC_FLAG_GLOBAL_HEADER, 0);
    EXPECT_NE(applied.context->flags2 & AV_CODEC_FLAG2_LOCAL_HEADER, 0);
  }
  EXPECT_THAT(Apply("mjpeg").options, ElementsAreArray(kCommon));
  EXPECT_THAT(Apply("mjpeg_nvenc").options, ElementsAreArray(kCommon));
}

TEST(EncoderOptions, OfQuickSyncEncoders) {
  const Applied mjpeg = Apply("mjpeg_qsv");
  EXPECT_EQ(mjpeg.context->profile, 192);
  EXPECT_THAT(mjpeg.options,
              ElementsAreArray(CommonAnd({"preset=faster", "async_depth=1", "forced_idr=1", "low_power=1",
                                          "qsv_device=auto", "look_ahead=0", "look_ahead_depth=0"})));
  EXPECT_THAT(Apply("mpeg2_qsv").options,
              ElementsAreArray(CommonAnd(
                  {"preset=veryfast", "async_depth=1", "low_power=1", "gop_size=30", "b_strategy=0"})));
  EXPECT_THAT(Apply("h264_qsv").options,
              ElementsAreArray(CommonAnd(
                  {"zerolatency=1", "preset=veryfast", "low_power=1", "tune=zerolatency", "rc_mode=vbr"})));
  EXPECT_THAT(Apply("hevc_qsv").options,
              ElementsAreArray(CommonAnd({"preset=veryfast", "tune=zerolatency", "rc_mode=cqp",
                                          "global_quality=28", "async_depth=4", "forced-idr=1"})));
}

TEST(EncoderOptions, OfTheSoftwareEncoders) {
  EXPECT_THAT(Apply("libx264").options,
              ElementsAreArray(CommonAnd({"profile=main", "preset=veryfast", "crf=24", "tune=zerolatency",
                                          "sc_threshold=0", "threads=auto"})));
  EXPECT_THAT(Apply("libx265").options,
              ElementsAreArray(CommonAnd({"profile=main", "preset=veryfast", "tune=zerolatency", "crf=28",
                                          "threads=auto", "scenecut=0", "bframes=0"})));
  const Applied mpeg4 = Apply("mpeg4");
  EXPECT_THAT(
      mpeg4.options,
      ElementsAreArray(CommonAnd({"threads=auto", "thread_type=slice+frame", "qmin=2", "qmax=31", "qdiff=3",
                                  "qblur=0.5", "qcomp=0.6", "trellis=0", "sc_threshold=0", "me_method=dia",
                                  "me_range=16", "mbd=0", "flags=+qscale", "qscale=5"})));
  EXPECT_EQ(mpeg4.context->strict_std_compliance, -1);
  EXPECT_EQ(mpeg4.context->thread_count, 0);
  EXPECT_EQ(mpeg4.context->thread_type, 3);
  EXPECT_EQ(mpeg4.context->refs, 1);
}

}  // namespace
}  // namespace brisolte
