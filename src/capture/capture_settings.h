#pragma once

#include <cstdint>
#include <string>

namespace brisolte {

/// What a recording shows.
enum class CaptureMode : std::int32_t { kNone = -1, kScreen = 0, kWindow = 1, kRegion = 2 };

/// A rectangle of the desktop, in desktop coordinates.
struct CaptureRegion {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t width = 0;
  std::int32_t height = 0;
};

/// The settings of one instance. A plain record: the encoder and the captures of a recording each hold a
/// copy.
struct CaptureSettings {
  CaptureMode mode = CaptureMode::kScreen;
  std::int32_t useMediaFoundation = 0;  ///< 0: FFmpeg, 1: Media Foundation
  std::int32_t monitorIndex = 0;
  std::int64_t windowHandle = 0;
  CaptureRegion region;
  std::string encoderName = "libx264";
  std::int32_t bitrate = 5'000'000;  ///< bits per second
  std::int32_t frameRate = 30;       ///< frames per second
  bool captureCursor = true;         ///< stored and reported; the capture service's default holds
  bool borderHighlight = false;      ///< stored and reported; the capture service's default holds
  std::string outputFilePath;        ///< UTF-8
  std::string outputDir;             ///< UTF-8
  std::string microphoneDeviceId;    ///< endpoint id; empty: no microphone
  std::string speakerDeviceId;       ///< endpoint id; empty: no speaker sound
  std::int32_t audioBitrate = 128'000;
  std::int32_t audioSampleRate = 44'100;
  std::int32_t audioChannels = 2;
};

}  // namespace brisolte
