#include "encoder/mf/mf_encoder.h"

#include <algorithm>
#include <utility>

#include "common/guarded.h"
#include "common/hresult_failure.h"
#include "common/local_time.h"
#include "common/logger.h"
#include "encoder/mf/sample_times.h"
#include "encoder/mf/sample_writer.h"

namespace brisolte {

MFEncoder::MFEncoder(CaptureSettings settings, std::unique_ptr<MFPlatform> platform, SteadyNow now)
    : settings_(std::move(settings)),
      platform_(std::move(platform)),
      now_(std::move(now)),
      session_(*platform_) {
  if (session_.started() && !Initialize()) {
    Logger::Error("Failed to initialize Sink Writer");
  }
}

MFEncoder::~MFEncoder() {
  Stop();
  Release();
}

bool MFEncoder::Initialize() {
  if (initialized_) {
    return HasWriter();
  }
  if (!session_.started()) {
    Logger::Error("MFEncoder not initialized");
    return false;
  }
  initialized_ = Guarded("", "in Initialize", [this] { return InitializeWriter(); });
  if (!initialized_) {
    Release();
  }
  return initialized_;
}

bool MFEncoder::InitializeWriter() {
  writer_ = MakeSinkWriter(*platform_, settings_.outputFilePath);
  if (writer_ == nullptr) {
    Logger::Error("Failed to initialize writer");
    return false;
  }
  if (devices_.Create(*platform_)) {
    return true;
  }
  Logger::Error("Failed to initialize D3D11Device");
  // Sound alone needs no device.
  return settings_.mode == CaptureMode::kNone;
}

bool MFEncoder::HasWriter() const {
  if (!initialized_) {
    Logger::Error("MFEncoder not initialized");
    return false;
  }
  if (writer_ == nullptr) {
    Logger::Error("Sink Writer not initialized");
    return false;
  }
  return true;
}

bool MFEncoder::InitializeVideoEncoder(std::uint32_t width, std::uint32_t height, ID3D11Device* device) {
  return HasWriter() &&
         Guarded("", "in InitializeVideoEncoder", [&] { return AddVideo(width, height, device); });
}

bool MFEncoder::AddVideo(std::uint32_t width, std::uint32_t height, ID3D11Device* device) {
  if (streams_.video) {
    Logger::Error("Failed to add video stream: there is one already");
    return false;
  }
  if (device != nullptr && !devices_.ResetDevice(*device)) {
    return false;
  }
  streams_.video = AddVideoStream(*platform_, *writer_.Get(), settings_, width, height, devices_.manager());
  if (!streams_.video) {
    return false;
  }
  const std::scoped_lock lock(copierMutex_);
  copier_.emplace(*devices_.device(), width, height);
  return true;
}

bool MFEncoder::CreateAudioStream(AudioStreamKind kind, const WaveFormat* format) {
  return HasWriter() && Guarded("", "in CreateAudioStream", [&] { return AddAudio(kind, format); });
}

bool MFEncoder::AddAudio(AudioStreamKind kind, const WaveFormat* format) {
  if (format == nullptr) {
    Logger::Error("Device format is null");
    return false;
  }
  const bool speaker = kind == AudioStreamKind::kSpeaker;
  if ((speaker && streams_.speaker) || (kind == AudioStreamKind::kMicrophone && streams_.microphone)) {
    Logger::Error("Failed to add audio stream: there is one already");
    return false;
  }
  const auto added = AddAudioStream(*platform_, *writer_.Get(), kind, *format, settings_.audioBitrate);
  if (added.spoilt) {
    StartOver();
  }
  if (!added.stream) {
    return false;
  }
  (speaker ? streams_.speaker : streams_.microphone) = added.stream;
  worker_.SetBytesPerSecond(kind, format->averageBytesPerSecond);
  worker_.SetChunkBytes(AudioChunkBytes(format->averageBytesPerSecond));
  return true;
}

/// A stream cannot be taken away again: another sink writer, with the streams that the first one took.
void MFEncoder::StartOver() {
  Logger::Info("Making the sink writer anew, without the sound that it refused");
  const SinkStreams before = std::exchange(streams_, {});
  writer_.Reset();  // and the file, which the other one makes
  writer_ = MakeSinkWriter(*platform_, settings_.outputFilePath);
  if (writer_ != nullptr && before.video) {
    streams_.video = AddVideoStream(*platform_, *writer_.Get(), settings_, before.video->width,
                                    before.video->height, devices_.manager());
  }
  const auto add = [this](AudioStreamKind kind, const std::optional<AudioSinkStream>& sound) {
    return writer_ != nullptr && sound
               ? AddAudioStream(*platform_, *writer_.Get(), kind, sound->format, settings_.audioBitrate)
                     .stream
               : std::nullopt;
  };
  streams_.microphone = add(AudioStreamKind::kMicrophone, before.microphone);
  streams_.speaker = add(AudioStreamKind::kSpeaker, before.speaker);
}

bool MFEncoder::Start() {
  if (capturing_) {
    Logger::Warning("MFEncoder is already writing");
    return true;
  }
  if (!HasWriter()) {
    return false;
  }
  const bool hasStreams = streams_.video || streams_.microphone || streams_.speaker;
  if (hasStreams && !SucceededOrLog(writer_->BeginWriting(), "Failed to begin writing: ")) {
    return false;
  }
  begun_ = hasStreams;
  sink_ = MediaSinkOf(*writer_.Get());
  Logger::Debug("MFEncoder starts writing at: " + std::to_string(WallClockMilliseconds()) + " ms");
  capturing_ = Guarded("", "in Start", [this] {
    worker_.Start(
        [this, writer = writer_, streams = streams_] {
          return std::make_unique<SampleWriter>(*platform_, writer, streams);
        },
        Layout());
    return true;
  });
  return capturing_;
}

bool MFEncoder::Stop() {
  return !capturing_ || Finalize();
}

bool MFEncoder::Finalize() {
  const CaptureClock::Moment stopped = now_();
  capturing_ = false;
  if (auto last = LastFrame(stopped)) {
    worker_.SetLastFrame(std::move(*last));
  }
  worker_.Stop([this] { EndWriting(); });
  if (std::exchange(begun_, false) &&
      SucceededOrLog(writer_->Finalize(), "Failed to finalize sink writer: ")) {
    writer_.Reset();
  }
  Release();
  return true;
}

/// What is missing in a stream ticks tell the sink writer, which has to be told each frame's time.
SinkLayout MFEncoder::Layout() const {
  return {.microphoneTick = streams_.microphone ? SinkLayout::kAudioTick : 0,
          .speakerTick = streams_.speaker ? SinkLayout::kAudioTick : 0,
          .videoTick = streams_.video ? kUnitsPerSecond / std::max(settings_.frameRate, 1) : 0};
}

void MFEncoder::EndWriting() {
  Logger::Error("The sink writer does not return: its file is closed without an end and cannot be played");
  // Not by the sink writer, which may be locked as long as the write lasts.
  if (sink_ != nullptr) {
    CloseFile(*sink_.Get());
  }
  begun_ = false;
}

void MFEncoder::Release() {
  {
    const std::scoped_lock lock(copierMutex_);
    lastFrame_ = {};
    copier_.reset();
  }
  devices_.Release();
  if (writer_ != nullptr) {
    const auto sink = sink_ != nullptr ? sink_ : MediaSinkOf(*writer_.Get());
    if (sink != nullptr) {
      CloseFile(*sink.Get());
    }
    writer_.Reset();
  }
  sink_.Reset();
}

bool MFEncoder::ProcessFrameAsync(const VideoFrame& frame) {
  return Guarded("", "in ProcessFrameAsync", [&] { return QueueFrame(frame); });
}

bool MFEncoder::QueueFrame(const VideoFrame& frame) {
  const CaptureClock::Moment arrival = now_();
  if (!capturing_) {
    Logger::Error("Cannot process video frame: not capturing or sink writer is null");
    return false;
  }
  if (!worker_.AcceptsFrame()) {
    return false;
  }
  if (frame.texture == nullptr) {
    Logger::Error("Invalid frame data: texture is null or invalid");
    return false;
  }
  const std::scoped_lock lock(copierMutex_);
  if (!copier_) {
    Logger::Error("Device manager not initialized");
    return false;
  }
  PooledTexture texture = copier_->Copy(*frame.texture);
  if (texture == nullptr) {
    return false;
  }
  captureClock_.FrameArrived(frame, arrival);
  lastFrame_ = {texture, frame.timestamp, frame.duration};
  return worker_.PushFrame({std::move(texture), frame.timestamp, frame.duration});
}

std::optional<QueuedFrame> MFEncoder::LastFrame(CaptureClock::Moment end) {
  const std::scoped_lock lock(copierMutex_);
  const std::int64_t oneFrame = 1000 / std::max(settings_.frameRate, 1);
  const std::int64_t begin = captureClock_.TimeAt(end).value_or(0) - oneFrame;
  if (lastFrame_.texture == nullptr || begin <= lastFrame_.timestamp) {
    return std::nullopt;
  }
  return QueuedFrame{std::move(lastFrame_.texture), begin, oneFrame};
}

bool MFEncoder::ProcessAudioFrame(const std::vector<std::uint8_t>& samples, const std::string& streamName) {
  const bool microphone = streamName == "microphone";
  if (!microphone && streamName != "speaker") {
    Logger::Error("Invalid stream name: " + streamName);
    return false;
  }
  if (!capturing_) {
    Logger::Error("Cannot process audio frame: not capturing or sink writer is null");
    return false;
  }
  const auto kind = microphone ? AudioStreamKind::kMicrophone : AudioStreamKind::kSpeaker;
  return Guarded("", "in ProcessAudioFrame", [&] { return worker_.PushAudio(kind, samples); });
}

}  // namespace brisolte
