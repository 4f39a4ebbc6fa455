#pragma once

#include <cstdint>

namespace brisolte {

/// The layouts a frame can be converted to; numbers as the graphics system has them.
enum class DxgiFormat : std::uint32_t { kB8G8R8A8Unorm = 87, kNv12 = 103, kYuy2 = 107 };

/// The layout for an encoder's wish: 1 NV12, 4 YUY2, anything else packed BGRA. Logs its choice at DEBUG.
DxgiFormat ConvertFFmpegPixelFormatToDXGI(std::int32_t code);

}  // namespace brisolte
