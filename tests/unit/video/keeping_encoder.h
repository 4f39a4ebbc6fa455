#pragma once

#include <d3d11.h>
#include <wrl/client.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

#include "encoder/encoder.h"

namespace brisolte::testing {

struct Yuv {
  int y = 0;
  int u = 0;
  int v = 0;
};

/// The pixels of a frame, copied.
class Picture {
 public:
  Picture() = default;
  Picture(const VideoFrame& frame, int pictureWidth, int pictureHeight, bool nv12)
      : width(pictureWidth), height(pictureHeight), timestamp(frame.timestamp), duration(frame.duration) {
    const int rows = nv12 ? height + height / 2 : height;
    pitch_ = nv12 ? width : width * 4;
    bytes_.reserve(static_cast<std::size_t>(pitch_) * rows);
    for (int row = 0; row < rows; ++row) {
      const std::uint8_t* start = frame.pixels.data + static_cast<std::size_t>(frame.pixels.rowPitch) * row;
      bytes_.insert(bytes_.end(), start, start + pitch_);
    }
  }

  /// 0xRRGGBB of a packed picture.
  std::uint32_t Rgb(int x, int y) const {
    const std::uint8_t* pixel =
        &bytes_[static_cast<std::size_t>(y) * pitch_ + static_cast<std::size_t>(x) * 4];
    return static_cast<std::uint32_t>(pixel[2]) << 16 | static_cast<std::uint32_t>(pixel[1]) << 8 | pixel[0];
  }

  /// The sample of an NV12 picture.
  Yuv At(int x, int y) const {
    const std::size_t chroma =
        static_cast<std::size_t>(height + y / 2) * pitch_ + static_cast<std::size_t>(x / 2) * 2;
    return {bytes_[static_cast<std::size_t>(y) * pitch_ + x], bytes_[chroma], bytes_[chroma + 1]};
  }

  int width = 0;
  int height = 0;
  std::int64_t timestamp = 0;
  std::int64_t duration = 0;

 private:
  int pitch_ = 0;
  std::vector<std::uint8_t> bytes_;
};

/// An encoder that keeps the last frame it was given, and the device.
class KeepingEncoder : public Encoder {
 public:
  explicit KeepingEncoder(bool nv12) : nv12_(nv12) {}

  bool InitializeVideoEncoder(std::uint32_t width, std::uint32_t height, ID3D11Device* device) override {
    width_ = static_cast<int>(width);
    height_ = static_cast<int>(height);
    device_ = device;
    return true;
  }
  bool GetPixelFormat() override { return nv12_; }

  bool ProcessFrameAsync(const VideoFrame& frame) override {
    const std::lock_guard lock(mutex_);
    D3D11_TEXTURE2D_DESC description{};
    frame.texture->GetDesc(&description);
    textureFits_ = static_cast<int>(description.Width) == width_ &&
                   static_cast<int>(description.Height) == height_ &&
                   description.Format == (nv12_ ? DXGI_FORMAT_NV12 : DXGI_FORMAT_B8G8R8A8_UNORM);
    last_ = Picture(frame, width_, height_, nv12_);
    ++frames_;
    arrived_.notify_all();
    return true;
  }

  /// The first frame from now on, or the last one given, that this holds for; an empty picture after 20
  /// seconds.
  Picture WaitFor(const std::function<bool(const Picture&)>& holds) {
    std::unique_lock lock(mutex_);
    const bool came =
        arrived_.wait_for(lock, std::chrono::seconds(20), [&] { return frames_ > 0 && holds(last_); });
    return came ? last_ : Picture();
  }
  Picture WaitForFrame() {
    return WaitFor([](const Picture&) { return true; });
  }

  bool textureFits() const {
    const std::lock_guard lock(mutex_);
    return textureFits_;
  }

  /// Gives the device up; how many references others still hold.
  ULONG DropDevice() { return device_.Detach()->Release(); }

  int width() const { return width_; }
  int height() const { return height_; }

  bool Initialize() override { return true; }
  bool Start() override { return true; }
  bool Stop() override { return true; }
  bool ProcessAudioFrame(const std::vector<std::uint8_t>& /*samples*/, const std::string& /*name*/) override {
    return false;
  }
  bool CreateAudioStream(AudioStreamKind /*kind*/, const WaveFormat* /*format*/) override { return false; }
  bool Finalize() override { return true; }

 private:
  const bool nv12_;
  int width_ = 0;
  int height_ = 0;
  Microsoft::WRL::ComPtr<ID3D11Device> device_;
  mutable std::mutex mutex_;
  std::condition_variable arrived_;
  Picture last_;
  int frames_ = 0;
  bool textureFits_ = false;
};

}  // namespace brisolte::testing
