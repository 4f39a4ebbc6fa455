#pragma once

#include <optional>
#include <string>

#include "capture/image_area.h"

namespace brisolte {

/// Writes an image of BGRA pixels, or an area that lies within it, as a PNG to `filePath` (UTF-8). A file
/// that is there already is replaced when the new one is complete. False when it cannot, with an ERROR line,
/// and nothing is changed. Any thread, with or without COM. Windows only.
bool WritePng(const ImagePixels& image, const std::optional<ImageArea>& area, const std::string& filePath);

}  // namespace brisolte
