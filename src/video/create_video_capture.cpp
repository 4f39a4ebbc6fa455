#include "video/create_video_capture.h"

#include <utility>

#include "video/video_capture.h"
#include "video/windows_capture_platform.h"

namespace brisolte {

std::unique_ptr<CaptureSource> CreateVideoCapture(const CaptureSettings& settings, Encoder& encoder,
                                                  Desktop& desktop,
                                                  std::shared_ptr<const PausableClock> clock,
                                                  const RecordingOptions& options) {
  return std::make_unique<VideoCapture>(settings, encoder, desktop, std::move(clock),
                                        CreateWindowsCapturePlatform(), options);
}

}  // namespace brisolte
