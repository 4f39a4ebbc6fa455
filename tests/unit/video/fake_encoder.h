#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "encoder/encoder.h"
#include "fake_system.h"

namespace brisolte::testing {

/// An encoder that takes part in a journal. Everything but video is of no interest here.
class FakeEncoder : public Encoder {
 public:
  explicit FakeEncoder(Journal& journal) : journal_(journal) {}

  bool acceptsStream = true;
  bool wantsNv12 = true;
  bool throwsOnFrame = false;
  ID3D11Device* device = nullptr;
  std::vector<std::uint8_t> firstBytes;  ///< of the frames' pixels

  bool ProcessFrameAsync(const VideoFrame& frame) override {
    if (throwsOnFrame) {
      throw std::runtime_error("encoder broke");
    }
    journal_.Note("encode " + std::to_string(frame.timestamp) + " " + std::to_string(frame.duration));
    firstBytes.push_back(frame.pixels.data[0]);
    return false;
  }
  bool InitializeVideoEncoder(std::uint32_t width, std::uint32_t height, ID3D11Device* onDevice) override {
    journal_.Note("video stream " + std::to_string(width) + "x" + std::to_string(height));
    device = onDevice;
    return acceptsStream;
  }
  bool GetPixelFormat() override {
    journal_.Note("GetPixelFormat");
    return wantsNv12;
  }

  bool Initialize() override { return true; }
  bool Start() override { return true; }
  bool Stop() override { return true; }
  bool ProcessAudioFrame(const std::vector<std::uint8_t>& /*samples*/, const std::string& /*name*/) override {
    return false;
  }
  bool CreateAudioStream(AudioStreamKind /*kind*/, const WaveFormat* /*format*/) override { return false; }
  bool Finalize() override { return true; }

 private:
  Journal& journal_;
};

}  // namespace brisolte::testing
