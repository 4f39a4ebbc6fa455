#include "encoder/mf/audio_sink_stream.h"

#include <mferror.h>

#include <string>
#include <vector>

#include "common/hresult_failure.h"
#include "common/logger.h"
#include "encoder/mf/media_types.h"

namespace brisolte {
namespace {

std::string Describe(const WaveFormat& format) {
  return "Channels: " + std::to_string(format.channels) +
         ", Sample Rate: " + std::to_string(format.sampleRate) +
         ", Bits per sample: " + std::to_string(format.bitsPerSample) +
         ", Block align: " + std::to_string(format.blockAlign) +
         ", Avg bytes per sec: " + std::to_string(format.averageBytesPerSecond) +
         ", Format Tag: " + std::to_string(format.formatTag);
}

bool ReportKind(AudioStreamKind kind) {
  switch (kind) {
    case AudioStreamKind::kMicrophone:
      Logger::Info("Configuring microphone stream");
      return true;
    case AudioStreamKind::kSpeaker:
      Logger::Info("Configuring speaker stream");
      return true;
  }
  Logger::Error("Invalid stream type: " + std::to_string(static_cast<std::int32_t>(kind)));
  return false;
}

std::optional<MediaName> ReportedSubtype(const WaveFormat& format) {
  const auto subtype = AudioInputSubtype(format);
  if (!subtype) {
    Logger::Error("Unsupported audio format tag: " + std::to_string(format.formatTag));
    return std::nullopt;
  }
  Logger::Info(*subtype == MediaName::kFloat ? "Input audio subtype set to MFAudioFormat_Float"
                                             : "Input audio subtype set to MFAudioFormat_PCM");
  return subtype;
}

std::string Describe(const AacType& type) {
  return std::to_string(type.sampleRate) + " Hz, " + std::to_string(type.channels) + " channels, " +
         std::to_string(8 * type.bytesPerSecond) + " bit/s";
}

/// The kind of AAC for the stream. What the system does not have is left out before there is a stream. Where
/// the system does not say what it has, it is asked for what is wanted.
std::optional<AacType> ChooseAacType(MFPlatform& platform, const AacType& wanted) {
  std::vector<AacType> available;
  if (FAILED(platform.ListAacTypes(available)) || available.empty()) {
    return wanted;
  }
  const auto nearest = NearestAacType(wanted, available);
  if (!nearest) {
    SucceededOrLog(MF_E_INVALIDMEDIATYPE, "Failed to set input media type: ");
  } else if (*nearest != wanted) {
    Logger::Info("AAC does not come with " + Describe(wanted) + "; encoding with " + Describe(*nearest));
  }
  return nearest;
}

/// Times are counted by the rate, and bytes by the alignment.
bool CanBeCounted(const WaveFormat& format) {
  if (format.sampleRate == 0 || format.blockAlign == 0) {
    Logger::Error("Device format has no sample rate or block alignment");
    return false;
  }
  return true;
}

}  // namespace

AddedAudio AddAudioStream(MFPlatform& platform, IMFSinkWriter& writer, AudioStreamKind kind,
                          const WaveFormat& format, std::int32_t bitrate) {
  Logger::Info("Device format: " + Describe(format));
  if (!ReportKind(kind) || !CanBeCounted(format)) {
    return {};
  }
  const auto subtype = ReportedSubtype(format);
  if (!subtype) {
    return {};
  }
  const auto input = MakeMediaType(platform, AudioInputAttributes(format, *subtype),
                                   "Failed to create audio input media type: ");
  if (input == nullptr) {
    return {};
  }
  const auto type = ChooseAacType(platform, WantedAacType(format, bitrate));
  if (!type) {
    return {};
  }
  const auto output =
      MakeMediaType(platform, AudioOutputAttributes(*type), "Failed to create audio output media type: ");
  DWORD index = 0;
  if (output == nullptr ||
      !SucceededOrLog(writer.AddStream(output.Get(), &index), "Failed to add audio stream: ")) {
    return {};
  }
  if (!SucceededOrLog(writer.SetInputMediaType(index, input.Get(), nullptr),
                      "Failed to set input media type: ")) {
    return {.stream = std::nullopt, .spoilt = true};
  }
  Logger::Info("Audio stream configured successfully. Stream index: " + std::to_string(index) + ", " +
               Describe(format));
  return {.stream = AudioSinkStream{index, format}};
}

}  // namespace brisolte
