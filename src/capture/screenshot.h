#pragma once

#include <string>

#include "capture/capture_settings.h"
#include "desktop/desktop.h"
#include "video/graphics_device.h"

namespace brisolte {

/// Takes one picture of the target that the settings name and writes it as a PNG to `filePath` (UTF-8). Waits
/// 200 ms for the picture. Any thread, with or without COM; recordings go on meanwhile.
///
/// False, with an ERROR line, when there is no such target, no picture, or no file. Raises HResultError when
/// the capture service refuses a step. Windows only.
bool TakeScreenshot(const CaptureSettings& settings, Desktop& desktop, const Direct3D& direct3d,
                    const std::string& filePath);

}  // namespace brisolte
