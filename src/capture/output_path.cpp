#include "capture/output_path.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "common/local_time.h"
#include "common/logger.h"

namespace brisolte {
namespace {

struct ContainerEncoders {
  std::string_view extension;
  std::string_view logText;
  std::initializer_list<std::string_view> encoderNames;
};

constexpr std::initializer_list<std::string_view> kMp4Encoders = {
    "libx264", "h264",        "h264_nvenc", "h264_qsv",   "h264_amf",  "h264_videotoolbox",
    "libx265", "hevc",        "hevc_nvenc", "hevc_qsv",   "hevc_amf",  "hevc_videotoolbox",
    "mpeg4",   "mpeg4_nvenc", "mpeg4_qsv",  "libaom-av1", "av1_nvenc", "av1_qsv",
    "av1_amf"};
constexpr std::initializer_list<std::string_view> kWebmEncoders = {
    "libvpx", "vp8", "vp8_nvenc", "vp8_qsv", "libvpx-vp9", "vp9", "vp9_nvenc", "vp9_qsv"};
constexpr std::initializer_list<std::string_view> kMovEncoders = {"prores", "prores_ks",
                                                                  "prores_videotoolbox"};
constexpr std::initializer_list<std::string_view> kAviEncoders = {"mjpeg", "mjpeg_qsv", "mjpeg_nvenc"};

constexpr std::initializer_list<ContainerEncoders> kContainers = {
    {"mp4", "Using MP4 container for encoder: ", kMp4Encoders},
    {"webm", "Using WebM container for encoder: ", kWebmEncoders},
    {"mov", "Using MOV container for encoder: ", kMovEncoders},
    {"avi", "Using AVI container for encoder: ", kAviEncoders},
};

std::string ExtensionFor(const CaptureSettings& settings) {
  if (settings.mode == CaptureMode::kNone) {
    return settings.useMediaFoundation == 1 ? "m4a" : "mp3";
  }
  return ContainerForEncoder(settings.encoderName);
}

}  // namespace

std::string ContainerForEncoder(const std::string& encoderName) {
  for (const ContainerEncoders& container : kContainers) {
    if (std::ranges::find(container.encoderNames, encoderName) != container.encoderNames.end()) {
      Logger::Info(std::string(container.logText) + encoderName);
      return std::string(container.extension);
    }
  }
  Logger::Warning("No supported container format found for encoder: " + encoderName);
  return "mp4";
}

std::string MakeOutputFilePath(const CaptureSettings& settings) {
  const std::string stem = "Qorvex-" + LocalTimeText("%Y-%m-%d-%H-%M-%S");
  const std::string extension = ExtensionFor(settings);
  if (extension.empty()) {
    Logger::Error("Could not find supported container format for encoder: " + settings.encoderName);
    return {};
  }
  return settings.outputDir + "\\" + stem + "." + extension;
}

}  // namespace brisolte
