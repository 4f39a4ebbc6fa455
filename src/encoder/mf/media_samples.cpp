#include "encoder/mf/media_samples.h"

#include <algorithm>
#include <string>
#include <utility>

#include "common/hresult_failure.h"
#include "common/logger.h"
#include "encoder/mf/sample_times.h"
#include "encoder/mf/texture_lease.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

/// A buffer's memory, locked until this goes.
class LockedBuffer {
 public:
  explicit LockedBuffer(IMFMediaBuffer& buffer)
      : buffer_(buffer), result_(buffer.Lock(&data_, &size_, nullptr)) {}
  LockedBuffer(const LockedBuffer&) = delete;
  LockedBuffer& operator=(const LockedBuffer&) = delete;
  ~LockedBuffer() { Unlock(); }

  HRESULT result() const { return result_; }
  std::span<std::uint8_t> bytes() const { return {data_, size_}; }

  /// Once; what is not locked is left alone.
  HRESULT Unlock() { return std::exchange(locked_, false) && SUCCEEDED(result_) ? buffer_.Unlock() : S_OK; }

 private:
  IMFMediaBuffer& buffer_;
  BYTE* data_ = nullptr;
  DWORD size_ = 0;
  const HRESULT result_;
  bool locked_ = true;
};

bool Fill(IMFMediaBuffer& buffer, std::span<const std::uint8_t> bytes) {
  LockedBuffer locked(buffer);
  if (!SucceededOrLog(locked.result(), "Failed to lock buffer: ")) {
    return false;
  }
  if (locked.bytes().size() < bytes.size()) {
    Logger::Error("Buffer too small. Required: " + std::to_string(bytes.size()) +
                  ", Available: " + std::to_string(locked.bytes().size()));
    return false;
  }
  std::ranges::copy(bytes, locked.bytes().begin());
  return SucceededOrLog(locked.Unlock(), "Failed to unlock buffer: ");
}

bool SetLength(IMFMediaBuffer& buffer, std::uint64_t bytes) {
  return SucceededOrLog(buffer.SetCurrentLength(static_cast<DWORD>(bytes)), "Failed to set buffer length: ");
}

ComPtr<IMFSample> MakeSample(MFPlatform& platform, IMFMediaBuffer& buffer, const SampleTiming& timing) {
  ComPtr<IMFSample> sample;
  const bool made =
      SucceededOrLog(platform.CreateSample(sample.GetAddressOf()), "Failed to create media sample: ") &&
      SucceededOrLog(sample->AddBuffer(&buffer), "Failed to add buffer to sample: ") &&
      SucceededOrLog(sample->SetSampleTime(timing.time), "Failed to set sample time: ") &&
      SucceededOrLog(sample->SetSampleDuration(timing.duration), "Failed to set sample duration: ");
  return made ? sample : nullptr;
}

}  // namespace

ComPtr<IMFSample> MakeVideoSample(MFPlatform& platform, const PooledTexture& texture,
                                  const SampleTiming& timing) {
  D3D11_TEXTURE2D_DESC description{};
  texture->GetDesc(&description);
  ComPtr<IMFMediaBuffer> buffer;
  const bool made = SucceededOrLog(platform.CreateDXGISurfaceBuffer(texture.get(), buffer.GetAddressOf()),
                                   "Failed to create DXGI surface buffer: ") &&
                    SucceededOrLog(LeaseTexture(*buffer.Get(), texture), "Failed to keep frame texture: ") &&
                    SetLength(*buffer.Get(), Nv12Bytes(description.Width, description.Height));
  return made ? MakeSample(platform, *buffer.Get(), timing) : nullptr;
}

ComPtr<IMFSample> MakeAudioSample(MFPlatform& platform, std::span<const std::uint8_t> bytes,
                                  const SampleTiming& timing) {
  ComPtr<IMFMediaBuffer> buffer;
  const HRESULT created =
      platform.CreateMemoryBuffer(static_cast<DWORD>(bytes.size()), buffer.GetAddressOf());
  const bool made = SucceededOrLog(created, "Failed to create memory buffer: ") &&
                    Fill(*buffer.Get(), bytes) && SetLength(*buffer.Get(), bytes.size());
  return made ? MakeSample(platform, *buffer.Get(), timing) : nullptr;
}

}  // namespace brisolte
