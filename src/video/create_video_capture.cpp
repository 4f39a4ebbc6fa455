#include "video/create_video_capture.h"

#include "video/video_capture.h"
#include "video/windows_capture_platform.h"

namespace brisolte {

std::unique_ptr<CaptureSource> CreateVideoCapture(const CaptureSettings& settings, Encoder& encoder,
                                                  Desktop& desktop) {
  return std::make_unique<VideoCapture>(settings, encoder, desktop, CreateWindowsCapturePlatform());
}

}  // namespace brisolte
