#pragma once

#include <windows.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>

#include "capture/capture_target.h"

namespace brisolte::standins {

/// A picture in memory as large as a frame pool's buffers, with the target in its top-left corner.
class Canvas {
 public:
  /// Black.
  explicit Canvas(abi::SizeInt32 size);

  /// False when there was no memory for it; then nothing else may be asked of it.
  bool usable() const { return pixels_ != nullptr; }

  abi::SizeInt32 size() const { return size_; }
  /// Rows of opaque BGRA from top to bottom, without gaps.
  const std::uint32_t* pixels() const { return pixels_; }

  /// Takes the target's picture, `content` being its size. What lies beyond it is black. False when it cannot
  /// be read.
  bool Draw(const CaptureTarget& target, abi::SizeInt32 content);

  /// Colours a rectangle of the picture, as far as the target reaches.
  void Fill(const RECT& place, std::uint32_t colour);
  /// What of the target it shows.
  abi::SizeInt32 content() const { return content_; }

  /// Makes every pixel opaque and tells whether the picture differs from that of `other`, which has the same
  /// size.
  bool FinishAndCompare(const Canvas& other);

 private:
  struct DeleteObjectLater {
    void operator()(HBITMAP bitmap) const { DeleteObject(bitmap); }
  };
  struct DeleteDcLater {
    void operator()(HDC dc) const { DeleteDC(dc); }
  };

  std::size_t PixelCount() const;
  void Blacken();

  abi::SizeInt32 size_;
  abi::SizeInt32 content_{0, 0};
  std::uint32_t* pixels_ = nullptr;
  std::unique_ptr<std::remove_pointer_t<HBITMAP>, DeleteObjectLater> bitmap_;
  std::unique_ptr<std::remove_pointer_t<HDC>, DeleteDcLater> dc_;
};

}  // namespace brisolte::standins
