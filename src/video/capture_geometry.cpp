#include "video/capture_geometry.h"

#include <algorithm>

namespace brisolte {
namespace {

/// One axis of the geometry: in 64 bits, because sums of desktop coordinates do not fit 32.
struct Extent {
  std::int64_t pool = 0;
  std::int64_t frame = 0;
  std::int64_t origin = 0;
  bool visible = false;

  bool supported() const {
    return pool > 0 && frame > 0 && pool <= kLargestTextureSide && frame <= kLargestTextureSide;
  }
};

Extent WholeExtent(std::int32_t item) {
  const std::int64_t size = RoundUpToEven(item);
  return {size, size, 0, true};
}

Extent RegionExtent(std::int32_t item, std::int32_t monitorStart, std::int32_t start, std::int32_t length) {
  const std::int64_t origin = std::int64_t{start} - monitorStart;
  const std::int64_t frame = RoundUpToEven(length);
  return {RoundUpToEven(origin + frame), frame, origin, origin < item && origin + length > 0};
}

/// How much of a length two ranges have in common.
std::int64_t SharedLength(std::int64_t start, std::int64_t end, std::int64_t otherStart,
                          std::int64_t otherEnd) {
  return std::max(std::min(end, otherEnd) - std::max(start, otherStart), std::int64_t{0});
}

std::int64_t SharedArea(const Rectangle& monitor, const CaptureRegion& region) {
  return SharedLength(monitor.left, monitor.right, region.left, std::int64_t{region.left} + region.width) *
         SharedLength(monitor.top, monitor.bottom, region.top, std::int64_t{region.top} + region.height);
}

GeometryResult Combine(const Extent& x, const Extent& y) {
  if (!x.supported() || !y.supported()) {
    return {{}, "Capture size is not supported: " + std::to_string(x.frame) + "x" + std::to_string(y.frame)};
  }
  const auto narrow = [](std::int64_t n) { return static_cast<std::int32_t>(n); };
  return {{{narrow(x.pool), narrow(y.pool)},
           {narrow(x.frame), narrow(y.frame)},
           {narrow(x.origin), narrow(y.origin)}},
          {}};
}

struct Span {
  std::int32_t source = 0;
  std::int32_t destination = 0;
  std::int32_t length = 0;
};

Span PlaceSpan(std::int32_t origin, std::int32_t frame, std::int32_t valid) {
  const std::int32_t from = std::max(origin, 0);
  const std::int64_t to = std::min(std::int64_t{origin} + frame, std::int64_t{valid});
  if (to <= from) {
    return {};
  }
  return {from, from - origin, static_cast<std::int32_t>(to - from)};
}

}  // namespace

std::int64_t RoundUpToEven(std::int64_t n) {
  return n + (n & 1);
}

bool ShowsRegion(const CaptureSettings& settings) {
  return settings.mode == CaptureMode::kRegion && settings.region.width > 0 && settings.region.height > 0;
}

MonitorEntry MonitorForRegion(const std::vector<MonitorEntry>& monitors, const MonitorEntry& preferred,
                              const CaptureRegion& region) {
  if (SharedArea(preferred.rect, region) > 0) {
    return preferred;
  }
  const auto area = [&](const MonitorEntry& monitor) { return SharedArea(monitor.rect, region); };
  const auto most = std::ranges::max_element(monitors, {}, area);
  return most != monitors.end() && area(*most) > 0 ? *most : preferred;
}

GeometryResult WholeItemGeometry(PixelSize item) {
  return Combine(WholeExtent(item.width), WholeExtent(item.height));
}

GeometryResult RegionGeometry(PixelSize item, const Rectangle& monitor, const CaptureRegion& region) {
  const Extent x = RegionExtent(item.width, monitor.left, region.left, region.width);
  const Extent y = RegionExtent(item.height, monitor.top, region.top, region.height);
  if (!x.visible || !y.visible) {
    return {{}, "Region lies outside the monitor"};
  }
  return Combine(x, y);
}

Placement PlaceContent(const CaptureGeometry& geometry, PixelSize texture, PixelSize content) {
  const Span x = PlaceSpan(geometry.origin.x, geometry.frame.width, std::min(texture.width, content.width));
  const Span y =
      PlaceSpan(geometry.origin.y, geometry.frame.height, std::min(texture.height, content.height));
  if (x.length == 0 || y.length == 0) {
    return {};
  }
  return {{x.source, y.source}, {x.destination, y.destination}, {x.length, y.length}};
}

}  // namespace brisolte
