#include "capture/output_path.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::IsEmpty;

struct Family {
  std::string extension;
  std::string logName;
  std::vector<std::string> encoders;
};

const std::vector<Family>& Families() {
  static const std::vector<Family> kFamilies = {
      {"mp4",
       "MP4",
       {"libx264", "h264", "h264_nvenc", "h264_qsv", "h264_amf", "h264_videotoolbox", "libx265", "hevc",
        "hevc_nvenc", "hevc_qsv", "hevc_amf", "hevc_videotoolbox", "mpeg4", "mpeg4_nvenc", "mpeg4_qsv",
        "libaom-av1", "av1_nvenc", "av1_qsv", "av1_amf"}},
      {"webm",
       "WebM",
       {"libvpx", "vp8", "vp8_nvenc", "vp8_qsv", "libvpx-vp9", "vp9", "vp9_nvenc", "vp9_qsv"}},
      {"mov", "MOV", {"prores", "prores_ks", "prores_videotoolbox"}},
      {"avi", "AVI", {"mjpeg", "mjpeg_qsv", "mjpeg_nvenc"}},
  };
  return kFamilies;
}

TEST(ContainerForEncoder, KnowsEveryEncoderOfEachContainer) {
  std::map<std::string, std::size_t> known;
  for (const Family& family : Families()) {
    for (const std::string& encoder : family.encoders) {
      const CapturedLog log;
      EXPECT_EQ(ContainerForEncoder(encoder), family.extension) << encoder;
      EXPECT_THAT(log.lines(),
                  ElementsAre("[INFO] Using " + family.logName + " container for encoder: " + encoder));
      ++known[family.extension];
    }
  }
  EXPECT_THAT(known, ElementsAre(::testing::Pair("avi", 3), ::testing::Pair("mov", 3),
                                 ::testing::Pair("mp4", 19), ::testing::Pair("webm", 8)));
}

TEST(ContainerForEncoder, FallsBackToMp4ForAnyOtherName) {
  const std::vector<std::string> names = {"LIBX264", "libx264 ", " libx264",
                                          "libx26",  "mf_h264",  "mf_hevc",
                                          "",        "vp",       std::string("libvpx\0", 7)};
  for (const std::string& name : names) {
    const CapturedLog log;
    EXPECT_EQ(ContainerForEncoder(name), "mp4") << name;
    EXPECT_THAT(log.lines(),
                ElementsAre("[WARNING] No supported container format found for encoder: " + name));
  }
}

CaptureSettings Settings(CaptureMode mode, const std::string& encoder, std::int32_t useMediaFoundation,
                         const std::string& directory) {
  CaptureSettings settings;
  settings.mode = mode;
  settings.encoderName = encoder;
  settings.useMediaFoundation = useMediaFoundation;
  settings.outputDir = directory;
  return settings;
}

/// The path with every digit as '#', which hides the time.
std::string MaskedPath(const CaptureSettings& settings) {
  std::string path = MakeOutputFilePath(settings);
  std::ranges::replace_if(path, [](char c) { return c >= '0' && c <= '9'; }, '#');
  return path;
}

constexpr auto kStem = "Qorvex-####-##-##-##-##-##";

TEST(MakeOutputFilePath, NamesAVideoByItsEncoder) {
  const CapturedLog log;
  for (const CaptureMode mode : {CaptureMode::kScreen, CaptureMode::kWindow, CaptureMode::kRegion}) {
    EXPECT_EQ(MaskedPath(Settings(mode, "vp9", 0, "C:\\Videos")),
              std::string("C:\\Videos\\") + kStem + ".webm");
  }
  EXPECT_EQ(log.count("[INFO] Using WebM container for encoder: vp9"), 3);
}

TEST(MakeOutputFilePath, RecordsMediaFoundationVideoIntoMp4) {
  const CapturedLog log;
  EXPECT_EQ(MaskedPath(Settings(CaptureMode::kScreen, "mf_h264", 1, "D")),
            std::string("D\\") + kStem + ".mp#");
  EXPECT_THAT(log.lines(), ElementsAre("[WARNING] No supported container format found for encoder: mf_h264"));
}

TEST(MakeOutputFilePath, NamesSoundAloneByTheEngineAndLogsNothing) {
  const CapturedLog log;
  EXPECT_THAT(MakeOutputFilePath(Settings(CaptureMode::kNone, "libx264", 0, "D")), EndsWith(".mp3"));
  EXPECT_THAT(MakeOutputFilePath(Settings(CaptureMode::kNone, "mf_h264", 1, "D")), EndsWith(".m4a"));
  EXPECT_THAT(MakeOutputFilePath(Settings(CaptureMode::kNone, "libx264", 2, "D")), EndsWith(".mp3"));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(MakeOutputFilePath, TakesTheDirectoryAsItStands) {
  const CapturedLog log;
  const std::string name = std::string(kStem) + ".mov";
  const std::vector<std::string> directories = {"", "C:\\Videos\\", "C:/\xC3\xBC\xE6\xBC\xA2"};
  for (const std::string& directory : directories) {
    EXPECT_EQ(MaskedPath(Settings(CaptureMode::kScreen, "prores", 0, directory)),
              (directory + "\\").append(name));
  }
}

}  // namespace
}  // namespace brisolte
