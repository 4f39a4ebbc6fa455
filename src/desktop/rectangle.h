#pragma once

#include <cstdint>

namespace brisolte {

/// A rectangle of the virtual desktop in pixels; right and bottom lie just outside it.
struct Rectangle {
  std::int32_t left = 0;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;

  /// Right minus left. Wider than the edges because their difference may not fit their type.
  constexpr std::int64_t width() const { return std::int64_t{right} - left; }

  /// Bottom minus top.
  constexpr std::int64_t height() const { return std::int64_t{bottom} - top; }

  friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

}  // namespace brisolte
