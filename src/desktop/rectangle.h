#pragma once

#include <cstdint>

namespace brisolte {

struct PixelSize {
  std::int32_t width = 0;
  std::int32_t height = 0;

  friend bool operator==(const PixelSize&, const PixelSize&) = default;
};

struct PixelPoint {
  std::int32_t x = 0;
  std::int32_t y = 0;

  friend bool operator==(const PixelPoint&, const PixelPoint&) = default;
};

/// A rectangle of the virtual desktop in the pixels that monitors have, whatever the display scaling; right
/// and bottom lie just outside it.
struct Rectangle {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;

  /// Right minus left. Wider than the edges because their difference may not fit their type.
  constexpr std::int64_t width() const { return std::int64_t{right} - left; }

  /// Bottom minus top.
  constexpr std::int64_t height() const { return std::int64_t{bottom} - top; }

  /// The middle.
  constexpr PixelPoint centre() const {
    return {static_cast<std::int32_t>(left + width() / 2), static_cast<std::int32_t>(top + height() / 2)};
  }

  friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

}  // namespace brisolte
