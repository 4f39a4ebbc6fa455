#include "video/pixel_format.h"

#include "common/logger.h"

namespace brisolte {

DxgiFormat ConvertFFmpegPixelFormatToDXGI(std::int32_t code) {
  switch (code) {
    case 1:
      Logger::Debug("ConvertFFmpegPixelFormatToDXGI: DXGI_FORMAT_NV12");
      return DxgiFormat::kNv12;
    case 4:
      Logger::Debug("ConvertFFmpegPixelFormatToDXGI: DXGI_FORMAT_YUY2");
      return DxgiFormat::kYuy2;
    default:
      Logger::Debug("ConvertFFmpegPixelFormatToDXGI: DXGI_FORMAT_B8G8R8A8_UNORM");
      return DxgiFormat::kB8G8R8A8Unorm;
  }
}

}  // namespace brisolte
