#include "encoder/mf/sample_writer.h"

#include <string>
#include <utility>

#include "common/guarded.h"
#include "common/hresult_failure.h"
#include "common/logger.h"
#include "encoder/mf/media_samples.h"
#include "encoder/mf/sample_times.h"

namespace brisolte {

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
  // Also when writing fails: what follows keeps the time that it has in the source.
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
