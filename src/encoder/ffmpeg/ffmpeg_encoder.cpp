#include "encoder/ffmpeg/ffmpeg_encoder.h"

#include <chrono>
#include <utility>

#include "common/guarded.h"
#include "common/local_time.h"
#include "common/logger.h"
#include "encoder/ffmpeg/ffmpeg_log.h"

namespace brisolte {

FFmpegEncoder::FFmpegEncoder(CaptureSettings settings, SteadyNow now, RecordingOptions options)
    : settings_(std::move(settings)),
      options_(std::move(options)),
      now_(std::move(now)),
      file_(options_),
      microphone_(MakeAudioStream("microphone", "Microphone")),
      speaker_(MakeAudioStream("speaker", "Speaker")) {
  LetFFmpegFollowLogLevel();
  if (settings_.outputFilePath.empty()) {
    Logger::Warning("FFmpegEncoder: Output path is empty, initialization cannot proceed");
    return;
  }
  Initialize();
}

AudioStream FFmpegEncoder::MakeAudioStream(const std::string& name, const std::string& title) {
  using std::chrono::milliseconds;
  return {name,
          title,
          {[this] { return AcceptsAudio(); },
           [this] { return std::chrono::duration_cast<milliseconds>(now_() - startTime_).count(); },
           [this](const AVPacket& packet) {
             return writer_.EnqueuePacket(&packet, packet.stream_index, false);
           }}};
}

FFmpegEncoder::~FFmpegEncoder() {
  Logger::Info("FFmpegEncoder: Destructor started");
  Stop();
  video_.Release();
  microphone_.Release();
  speaker_.Release();
  file_.Close();
  Logger::Info("FFmpegEncoder: Destructor completed");
}

bool FFmpegEncoder::Initialize() {
  const std::scoped_lock lifecycle(lifecycleMutex_);
  return file_.Initialize(settings_.outputFilePath);
}

bool FFmpegEncoder::Start() {
  const std::scoped_lock lifecycle(lifecycleMutex_);
  if (!file_.initialized()) {
    Logger::Error("FFmpegEncoder: Not initialized before starting");
    return false;
  }
  if (writer_.running()) {
    Logger::Warning("FFmpegEncoder: Writer thread is already running");
    return true;
  }
  WriteHeader();
  Logger::Info("Audio capture starting with timestamp: " + std::to_string(WallClockMilliseconds()) + " ms");
  {
    const std::scoped_lock audio(audioMutex_);
    startTime_ = now_();
  }
  writer_.Start([this](AVPacket& packet) { return WritePacket(packet); }, [this] { Flush(); },
                options_.playableThroughout ? [this] { ShowStillPicture(); } : PacketWriter::Beat());
  return true;
}

int FFmpegEncoder::WritePacket(AVPacket& packet) {
  int result = AVERROR_UNKNOWN;
  Guarded("", "in WritePacket", [&] {
    result = file_.WritePacket(packet);
    return true;
  });
  return result;
}

void FFmpegEncoder::Flush() {
  Guarded("", "in Flush", [this] {
    file_.Flush();
    return true;
  });
}

void FFmpegEncoder::WriteHeader() {
  // The muxer may choose another time base for the streams, which stamps the packets.
  const std::scoped_lock video(videoMutex_);
  const std::scoped_lock audio(audioMutex_);
  file_.WriteHeader();
}

bool FFmpegEncoder::Stop() {
  const CaptureClock::Moment stopped = now_();
  const std::scoped_lock lifecycle(lifecycleMutex_);
  if (!writer_.running()) {
    return false;
  }
  stopping_ = true;
  DrainStreams(stopped);
  writer_.Stop();
  stopping_ = false;
  file_.Finalize();
  Logger::Info("FFmpegEncoder: Writer thread has stopped");
  return true;
}

void FFmpegEncoder::DrainStreams(CaptureClock::Moment stopped) {
  Guarded("", "in Stop", [&] {
    const auto enqueue = [this](const AVPacket& packet) { return EnqueueVideoPacket(packet); };
    const std::scoped_lock video(videoMutex_);
    if (const auto end = captureClock_.TimeAt(stopped)) {
      video_.ShowUntil(*end, enqueue);
    }
    video_.Drain(enqueue);
    return true;
  });
  Guarded("", "in Stop", [this] {
    const std::scoped_lock audio(audioMutex_);
    microphone_.Drain();
    speaker_.Drain();
    return true;
  });
}

bool FFmpegEncoder::Finalize() {
  const std::scoped_lock lifecycle(lifecycleMutex_);
  if (writer_.running()) {
    // Packets are on their way into the file; `Stop` finalizes it after the last one.
    Logger::Error("FFmpegEncoder: Failed to write trailer!!!!!");
    return false;
  }
  return file_.Finalize();
}

bool FFmpegEncoder::InitializeVideoEncoder(std::uint32_t width, std::uint32_t height,
                                           ID3D11Device* /*device*/) {
  const std::scoped_lock locks(lifecycleMutex_, videoMutex_);
  return Guarded("FFmpegEncoder: ", "during video encoder initialization",
                 [&] { return video_.Initialize(file_, settings_, options_, width, height); });
}

bool FFmpegEncoder::GetPixelFormat() {
  const std::scoped_lock video(videoMutex_);
  return video_.GetPixelFormat();
}

bool FFmpegEncoder::ProcessFrameAsync(const VideoFrame& frame) {
  const CaptureClock::Moment arrival = now_();
  const std::scoped_lock video(videoMutex_);
  captureClock_.FrameArrived(frame, arrival);
  lastArrival_ = arrival;
  return Guarded("", "in ProcessFrameAsync", [&] {
    return video_.EncodeFrame(frame, [this](const AVPacket& packet) { return EnqueueVideoPacket(packet); });
  });
}

void FFmpegEncoder::ShowStillPicture() {
  // No picture comes while nothing changes. One that is on its way is later than what this shows, and not so
  // late that much would be missing.
  constexpr std::chrono::milliseconds kStill{500};
  constexpr std::chrono::milliseconds kOnItsWay{250};
  const CaptureClock::Moment now = now_();
  Guarded("", "in ShowStillPicture", [&] {
    const std::scoped_lock video(videoMutex_);
    const auto shown = captureClock_.TimeAt(now - kOnItsWay);
    // Once the streams are drained an encoder takes nothing more.
    if (shown && now - lastArrival_ >= kStill && !stopping_) {
      video_.ShowUntil(*shown, [this](const AVPacket& packet) { return EnqueueVideoPacket(packet); });
    }
    return true;
  });
}

bool FFmpegEncoder::EnqueueVideoPacket(const AVPacket& packet) {
  return writer_.EnqueuePacket(&packet, packet.stream_index, true);
}

AudioStream* FFmpegEncoder::FindAudioStream(AudioStreamKind kind) {
  switch (kind) {
    case AudioStreamKind::kMicrophone:
      return &microphone_;
    case AudioStreamKind::kSpeaker:
      return &speaker_;
  }
  return nullptr;
}

AudioStream* FFmpegEncoder::FindAudioStream(const std::string& name) {
  if (name == microphone_.name()) {
    return &microphone_;
  }
  return name == speaker_.name() ? &speaker_ : nullptr;
}

bool FFmpegEncoder::CreateAudioStream(AudioStreamKind kind, const WaveFormat* format) {
  const std::scoped_lock lifecycle(lifecycleMutex_);
  const std::scoped_lock audio(audioMutex_);
  AudioStream* const stream = FindAudioStream(kind);
  if (stream == nullptr) {
    Logger::Error("Invalid parameters for CreateAudioStream");
    return false;
  }
  return Guarded("", "in CreateAudioStream",
                 [&] { return stream->Create(file_, format, settings_, options_.sound); });
}

bool FFmpegEncoder::ProcessAudioFrame(const std::vector<std::uint8_t>& samples,
                                      const std::string& streamName) {
  const std::scoped_lock audio(audioMutex_);
  if (!AcceptsAudio() || samples.empty()) {
    Logger::Warning("Audio processing skipped: thread not running or empty data");
    return false;
  }
  AudioStream* const stream = FindAudioStream(streamName);
  if (stream == nullptr) {
    Logger::Error("Invalid stream name: " + streamName);
    return false;
  }
  return Guarded("", "in ProcessAudioFrame", [&] { return stream->Process(samples); });
}

}  // namespace brisolte
