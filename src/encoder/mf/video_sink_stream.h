#pragma once

#include <cstdint>
#include <optional>

#include "capture/capture_settings.h"
#include "encoder/mf/media_foundation.h"

namespace brisolte {

/// Adds the video stream to a sink writer: NV12 frames of this even size, encoded as the settings say. With a
/// manager the encoder takes them as textures of the manager's device; it may be null. The stream's index;
/// none when a call fails, with an ERROR line.
std::optional<DWORD> AddVideoStream(MediaFoundation& platform, IMFSinkWriter& writer,
                                    const CaptureSettings& settings, std::uint32_t width,
                                    std::uint32_t height, IMFDXGIDeviceManager* manager);

}  // namespace brisolte
