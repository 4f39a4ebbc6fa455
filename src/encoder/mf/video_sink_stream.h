#pragma once

#include <cstdint>
#include <optional>

#include "capture/capture_settings.h"
#include "encoder/mf/mf_platform.h"

namespace brisolte {

/// The video stream of a sink writer.
struct VideoSinkStream {
  DWORD index = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
};

/// Adds the video stream to a sink writer: NV12 frames of this even size, encoded as the settings say. With a
/// manager the encoder takes them as textures of the manager's device; it may be null. None when a
/// call fails, with an ERROR line.
std::optional<VideoSinkStream> AddVideoStream(MFPlatform& platform, IMFSinkWriter& writer,
                                              const CaptureSettings& settings, std::uint32_t width,
                                              std::uint32_t height, IMFDXGIDeviceManager* manager);

}  // namespace brisolte
