#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "encoder/video_frame.h"

namespace brisolte::bench {

/// A short film of a detailed picture whose bands move at different speeds, made before it is needed.
class MovingPictures {
 public:
  enum class Layout { kNv12, kBgra };

  /// Width and height are even.
  MovingPictures(Layout layout, std::uint32_t width, std::uint32_t height, std::size_t count);

  /// Picture `number` of the film, which begins anew after its last. Valid as long as this object.
  const std::uint8_t* Picture(std::size_t number) const {
    return pictures_[number % pictures_.size()].data();
  }

  /// The same as captured, 30 a second.
  VideoFrame Frame(std::size_t number) const;

  std::size_t count() const { return pictures_.size(); }
  std::uint32_t rowPitch() const { return rowPitch_; }
  std::size_t pictureBytes() const { return pictures_.front().size(); }

 private:
  std::uint32_t rowPitch_;
  std::vector<std::vector<std::uint8_t>> pictures_;
};

/// "nv12" (also what yuv420p is made from) or "bgra".
MovingPictures::Layout LayoutNamed(const std::string& name);

}  // namespace brisolte::bench
