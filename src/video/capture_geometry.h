#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "capture/capture_settings.h"
#include "desktop/monitors.h"
#include "desktop/rectangle.h"

namespace brisolte {

/// The largest width or height that a texture can have.
inline constexpr std::int32_t kLargestTextureSide = 16384;

/// How the textures of the frame pool become frames of the recording.
struct CaptureGeometry {
  PixelSize pool;     ///< of the pool's textures, even
  PixelSize frame;    ///< of the frames, even
  PixelPoint origin;  ///< where the frame begins in the pool's textures; negative when it begins outside
};

/// A geometry, or the reason why there is none.
struct GeometryResult {
  CaptureGeometry geometry;
  std::string error;  ///< a sentence for the log; empty when `geometry` holds
};

/// `n` or the even number above it.
std::int64_t RoundUpToEven(std::int64_t n);

/// Whether the settings ask for a part of a monitor.
bool ShowsRegion(const CaptureSettings& settings);

/// The monitor to record a region of: `preferred` when it shows any of the region, else the one that shows
/// most of it, and `preferred` again when none does.
MonitorEntry MonitorForRegion(const std::vector<MonitorEntry>& monitors, const MonitorEntry& preferred,
                              const CaptureRegion& region);

/// Frames that show all of a captured item of this size.
GeometryResult WholeItemGeometry(PixelSize item);

/// Frames that show a region of the desktop, captured with a whole monitor; `item` is the size of what is
/// captured of it. The pool reaches from the monitor's origin to the region's far corner. The region may
/// reach beyond the monitor, but must not lie wholly outside.
GeometryResult RegionGeometry(PixelSize item, const Rectangle& monitor, const CaptureRegion& region);

/// The part of a texture that appears in a frame, and where.
struct Placement {
  PixelPoint source;
  PixelPoint destination;
  PixelSize size;  ///< 0 both ways when nothing appears

  friend bool operator==(const Placement&, const Placement&) = default;
};

/// Where the valid pixels of a texture appear in the frame. A texture holds content up to the content's size
/// only; what lies beyond is undefined.
Placement PlaceContent(const CaptureGeometry& geometry, PixelSize texture, PixelSize content);

}  // namespace brisolte
