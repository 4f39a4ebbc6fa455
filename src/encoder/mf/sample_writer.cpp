#include "encoder/mf/sample_writer.h"

#include <algorithm>
#include <string>
#include <utility>

#include "common/guarded.h"
#include "common/hresult_failure.h"
#include "common/logger.h"
#include "encoder/mf/frame_textures.h"
#include "encoder/mf/sample_times.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

/// When a sample begins, and how long it lasts, in units of 100 nanoseconds.
struct SampleTiming {
  std::int64_t time = 0;
  std::int64_t duration = 0;
};

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

/// A sample over an NV12 texture, which the sample keeps from being used for another frame. Null when a call
/// fails, with an ERROR line.
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

/// A sample with a copy of these bytes. Null when a call fails, with an ERROR line.
ComPtr<IMFSample> MakeAudioSample(MFPlatform& platform, std::span<const std::uint8_t> bytes,
                                  const SampleTiming& timing) {
  ComPtr<IMFMediaBuffer> buffer;
  const HRESULT created =
      platform.CreateMemoryBuffer(static_cast<DWORD>(bytes.size()), buffer.GetAddressOf());
  const bool made = SucceededOrLog(created, "Failed to create memory buffer: ") &&
                    Fill(*buffer.Get(), bytes) && SetLength(*buffer.Get(), bytes.size());
  return made ? MakeSample(platform, *buffer.Get(), timing) : nullptr;
}

}  // namespace

SampleWriter::SampleWriter(MFPlatform& platform, Microsoft::WRL::ComPtr<IMFSinkWriter> writer,
                           const SinkStreams& streams)
    : platform_(platform),
      writer_(std::move(writer)),
      video_(streams.video),
      microphone_{"microphone", streams.microphone},
      speaker_{"speaker", streams.speaker} {
  SucceededOrLog(apartment_.result(), "Failed to initialize COM: ");
}

bool SampleWriter::WriteFrame(const QueuedFrame& frame) {
  return !HasFailed() && Guarded("", "in WriteFrame", [&] { return WriteVideoSample(frame); });
}

void SampleWriter::WriteAudio(AudioStreamKind kind, std::span<const std::uint8_t> chunk) {
  Sound& sound = kind == AudioStreamKind::kMicrophone ? microphone_ : speaker_;
  if (!HasFailed()) {
    Guarded("", "in WriteAudio", [&] { return WriteAudioSample(sound, chunk); });
  }
}

bool SampleWriter::WriteVideoSample(const QueuedFrame& frame) {
  const auto sample =
      MakeVideoSample(platform_, frame.texture, {SampleTime(frame.timestamp), SampleTime(frame.duration)});
  return sample != nullptr && video_ &&
         Count(SucceededOrLog(writer_->WriteSample(video_->index, sample.Get()), "Failed to write sample: "));
}

bool SampleWriter::WriteAudioSample(Sound& sound, std::span<const std::uint8_t> chunk) {
  if (chunk.empty()) {
    Logger::Error("Audio data is empty");
    return false;
  }
  if (!sound.stream) {
    Logger::Error(std::string("Invalid stream name: ") + sound.name);
    return false;
  }
  const WaveFormat& format = sound.stream->format;
  const std::size_t frames = chunk.size() / format.blockAlign;
  if (frames * format.blockAlign != chunk.size()) {
    Logger::Error("Audio data size mismatch. Expected: " + std::to_string(frames * format.blockAlign) +
                  ", Actual: " + std::to_string(chunk.size()));
    return false;
  }
  const auto count = static_cast<std::int64_t>(frames);
  const auto sample = MakeAudioSample(
      platform_, chunk,
      {AudioSampleTime(sound.framesWritten, format.sampleRate), AudioSampleTime(count, format.sampleRate)});
  if (sample == nullptr) {
    return false;
  }
  // Also when writing fails: what follows is stamped with the time that it has in the source.
  sound.framesWritten += count;
  return Count(SucceededOrLog(writer_->WriteSample(sound.stream->index, sample.Get()),
                              "Failed to write audio sample: "));
}

std::optional<DWORD> SampleWriter::IndexOf(SinkStream stream) const {
  const auto indexOf = [](const auto& added) { return added ? std::optional(added->index) : std::nullopt; };
  switch (stream) {
    case SinkStream::kMicrophone:
      return indexOf(microphone_.stream);
    case SinkStream::kSpeaker:
      return indexOf(speaker_.stream);
    case SinkStream::kVideo:
      return indexOf(video_);
  }
  return std::nullopt;
}

/// One that refuses ticks does so each time, and may take the samples all the same.
void SampleWriter::SendTick(SinkStream stream, std::int64_t time) {
  const auto index = IndexOf(stream);
  if (index && ticksTaken_ && !HasFailed()) {
    ticksTaken_ = SucceededOrLog(writer_->SendStreamTick(*index, time), "Failed to send stream tick: ");
  }
}

/// A full disk or a lost device fails every sample that follows: after some in a row no more are tried.
bool SampleWriter::Count(bool written) {
  failures_ = written ? 0 : failures_ + 1;
  if (failures_ == kMostFailures) {
    Logger::Error("The sink writer takes nothing more: what follows is not recorded");
  }
  return written;
}

}  // namespace brisolte
