#include "encoder/ffmpeg/ffmpeg_encoder.h"

#include <chrono>
#include <exception>
#include <utility>

#include "common/logger.h"

namespace brisolte {
namespace {

std::int64_t WallClockMilliseconds() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

/// Runs `step`; an exception becomes an ERROR line and false. The routine reads "in ..." or "during ...".
template <typename Step>
bool Guarded(const std::string& prefix, const std::string& routine, Step step) {
  try {
    return step();
  } catch (const std::exception& error) {
    Logger::Error(prefix + "Exception " + routine + ": " + error.what());
  } catch (...) {
    Logger::Error(prefix + "Unknown exception " + routine);
  }
  return false;
}

}  // namespace

FFmpegEncoder::FFmpegEncoder(CaptureSettings settings) : settings_(std::move(settings)) {
  if (settings_.outputFilePath.empty()) {
    Logger::Warning("FFmpegEncoder: Output path is empty, initialization cannot proceed");
    return;
  }
  Initialize();
}

FFmpegEncoder::~FFmpegEncoder() {
  Logger::Info("FFmpegEncoder: Destructor started");
  Stop();
  video_.Release();
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
  writer_.Start([this](AVPacket& packet) { return file_.WritePacket(packet); });
  return true;
}

void FFmpegEncoder::WriteHeader() {
  // The muxer may choose another time base for the streams, which stamps the packets.
  const std::scoped_lock video(videoMutex_);
  file_.WriteHeader();
}

bool FFmpegEncoder::Stop() {
  const std::scoped_lock lifecycle(lifecycleMutex_);
  if (!writer_.running()) {
    return false;
  }
  Guarded("", "in Stop", [this] {
    const std::scoped_lock video(videoMutex_);
    video_.Drain([this](const AVPacket& packet) { return EnqueueVideoPacket(packet); });
    return true;
  });
  writer_.Stop();
  file_.Finalize();
  Logger::Info("FFmpegEncoder: Writer thread has stopped");
  return true;
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
                 [&] { return video_.Initialize(file_, settings_, width, height); });
}

bool FFmpegEncoder::GetPixelFormat() {
  const std::scoped_lock video(videoMutex_);
  return video_.GetPixelFormat();
}

bool FFmpegEncoder::ProcessFrameAsync(const VideoFrame& frame) {
  const std::scoped_lock video(videoMutex_);
  return Guarded("", "in ProcessFrameAsync", [&] {
    return video_.EncodeFrame(frame, [this](const AVPacket& packet) { return EnqueueVideoPacket(packet); });
  });
}

bool FFmpegEncoder::EnqueueVideoPacket(const AVPacket& packet) {
  return writer_.EnqueuePacket(&packet, packet.stream_index, true);
}

bool FFmpegEncoder::CreateAudioStream(AudioStreamKind /*kind*/, const WaveFormat* /*format*/) {
  Logger::Error("FFmpegEncoder: Sound is not available yet");
  return false;
}

bool FFmpegEncoder::ProcessAudioFrame(const std::vector<std::uint8_t>& /*samples*/,
                                      const std::string& streamName) {
  if (streamName != "microphone" && streamName != "speaker") {
    Logger::Error("Invalid stream name: " + streamName);
    return false;
  }
  Logger::Error("FFmpegEncoder: Sound is not available yet");
  return false;
}

}  // namespace brisolte
