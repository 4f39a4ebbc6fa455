#include "encoder/mf/sink_streams.h"

#include <mfapi.h>
#include <mferror.h>

#include <string>
#include <vector>

#include "common/hresult_failure.h"
#include "common/logger.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

// Keys of our own: readers of the media type know profile and level by them.
constexpr GUID kH264ProfileKey{0x8D0F5A49, 0x6B9B, 0x4F95, {0x9A, 0x8E, 0x4B, 0x8D, 0x8C, 0x0C, 0x0C, 0x88}};
constexpr GUID kH264LevelKey{0x8D0F5A4A, 0x6B9B, 0x4F95, {0x9A, 0x8E, 0x4B, 0x8D, 0x8C, 0x0C, 0x0C, 0x88}};
constexpr GUID kHevcProfileKey{0xDFA21BAE, 0x245A, 0x4C94, {0xA5, 0x6C, 0xD0, 0x1C, 0xC0, 0x0C, 0xB9, 0xD6}};
constexpr GUID kHevcLevelKey{0xDFA21BAF, 0x245A, 0x4C94, {0xA5, 0x6C, 0xD0, 0x1C, 0xC0, 0x0C, 0xB9, 0xD6}};

constexpr UINT32 kH264Baseline = 66;
constexpr UINT32 kHevcMain = 1;
constexpr UINT32 kLevel4 = 40;
constexpr UINT32 kEncodedBitsPerSample = 16;

/// A media type that is described attribute by attribute. The first call that fails has an ERROR line, and no
/// other is made after it.
class MediaTypeDescription {
 public:
  MediaTypeDescription(MFPlatform& platform, const char* failure) {
    Keep(platform.CreateMediaType(type_.GetAddressOf()), failure);
  }

  void Set(REFGUID key, REFGUID value, const char* failure) {
    Try([&] { return type_->SetGUID(key, value); }, failure);
  }
  void Set(REFGUID key, UINT32 value, const char* failure) {
    Try([&] { return type_->SetUINT32(key, value); }, failure);
  }
  /// A size or a ratio.
  void Set(REFGUID key, UINT32 first, UINT32 second, const char* failure) {
    Try([&] { return type_->SetUINT64(key, Pack2UINT32AsUINT64(first, second)); }, failure);
  }

  /// Null when a call failed.
  ComPtr<IMFMediaType> type() const { return failed_ ? nullptr : type_; }

 private:
  template <typename Call>
  void Try(Call call, const char* failure) {
    if (!failed_) {
      Keep(call(), failure);
    }
  }

  void Keep(HRESULT result, const char* failure) { failed_ = !SucceededOrLog(result, failure); }

  ComPtr<IMFMediaType> type_;
  bool failed_ = false;
};

UINT32 FrameRate(const CaptureSettings& settings) {
  return static_cast<UINT32>(settings.frameRate);
}

void DescribeEncoder(MediaTypeDescription& output, const CaptureSettings& settings) {
  const bool h264 = settings.encoderName == "mf_h264";
  output.Set(MF_MT_SUBTYPE, h264 ? MFVideoFormat_H264 : MFVideoFormat_HEVC, "Failed to set subtype: ");
  output.Set(MF_MT_AVG_BITRATE, static_cast<UINT32>(settings.bitrate), "Failed to set average bitrate: ");
  output.Set(h264 ? kH264ProfileKey : kHevcProfileKey, h264 ? kH264Baseline : kHevcMain,
             "Failed to set profile: ");
  output.Set(h264 ? kH264LevelKey : kHevcLevelKey, kLevel4, "Failed to set level: ");
}

/// The encoded video in the file.
ComPtr<IMFMediaType> MakeVideoOutputType(MFPlatform& platform, const CaptureSettings& settings,
                                         std::uint32_t width, std::uint32_t height) {
  MediaTypeDescription output(platform, "Failed to create media type: ");
  output.Set(MF_MT_MAJOR_TYPE, MFMediaType_Video, "Failed to set major type: ");
  if (settings.encoderName == "mf_h264" || settings.encoderName == "mf_hevc") {
    DescribeEncoder(output, settings);
  }
  output.Set(MF_MT_FRAME_RATE, FrameRate(settings), 1, "Failed to set frame rate: ");
  // As many frames as a second has: a key frame every second.
  output.Set(MF_MT_MAX_KEYFRAME_SPACING, FrameRate(settings), "Failed to set max keyframe spacing: ");
  output.Set(MF_MT_PIXEL_ASPECT_RATIO, 1, 1, "Failed to set pixel aspect ratio: ");
  output.Set(MF_MT_FRAME_SIZE, width, height, "Failed to set frame size: ");
  output.Set(MF_MT_INTERLACE_MODE, UINT32{MFVideoInterlace_Progressive}, "Failed to set interlace mode: ");
  return output.type();
}

/// The frames that are handed over.
ComPtr<IMFMediaType> MakeVideoInputType(MFPlatform& platform, const CaptureSettings& settings,
                                        std::uint32_t width, std::uint32_t height) {
  MediaTypeDescription input(platform, "Failed to create input media type: ");
  input.Set(MF_MT_MAJOR_TYPE, MFMediaType_Video, "Failed to set input major type: ");
  input.Set(MF_MT_SUBTYPE, MFVideoFormat_NV12, "Failed to set input subtype: ");
  input.Set(MF_MT_FRAME_SIZE, width, height, "Failed to set input frame size: ");
  input.Set(MF_MT_FRAME_RATE, FrameRate(settings), 1, "Failed to set input frame rate: ");
  input.Set(MF_MT_PIXEL_ASPECT_RATIO, 1, 1, "Failed to set input pixel aspect ratio: ");
  return input.type();
}

/// The samples that are handed over, as the device has them.
ComPtr<IMFMediaType> MakeAudioInputType(MFPlatform& platform, const WaveFormat& format, REFGUID subtype) {
  MediaTypeDescription input(platform, "Failed to create audio input media type: ");
  input.Set(MF_MT_MAJOR_TYPE, MFMediaType_Audio, "Failed to set major type: ");
  input.Set(MF_MT_SUBTYPE, subtype, "Failed to set subtype: ");
  input.Set(MF_MT_AUDIO_NUM_CHANNELS, UINT32{format.channels}, "Failed to set channels: ");
  input.Set(MF_MT_AUDIO_SAMPLES_PER_SECOND, UINT32{format.sampleRate}, "Failed to set sample rate: ");
  input.Set(MF_MT_AUDIO_BITS_PER_SAMPLE, UINT32{format.bitsPerSample}, "Failed to set bits per sample: ");
  input.Set(MF_MT_AUDIO_BLOCK_ALIGNMENT, UINT32{format.blockAlign}, "Failed to set block alignment: ");
  input.Set(MF_MT_AUDIO_AVG_BYTES_PER_SECOND, UINT32{format.averageBytesPerSecond},
            "Failed to set average bytes per second: ");
  return input.type();
}

/// The encoded sound in the file.
ComPtr<IMFMediaType> MakeAudioOutputType(MFPlatform& platform, const AacType& type) {
  MediaTypeDescription output(platform, "Failed to create audio output media type: ");
  output.Set(MF_MT_MAJOR_TYPE, MFMediaType_Audio, "Failed to set output major type: ");
  output.Set(MF_MT_SUBTYPE, MFAudioFormat_AAC, "Failed to set output subtype: ");
  output.Set(MF_MT_AUDIO_NUM_CHANNELS, UINT32{type.channels}, "Failed to set output channels: ");
  output.Set(MF_MT_AUDIO_SAMPLES_PER_SECOND, UINT32{type.sampleRate}, "Failed to set output sample rate: ");
  output.Set(MF_MT_AUDIO_BITS_PER_SAMPLE, kEncodedBitsPerSample, "Failed to set output bits per sample: ");
  output.Set(MF_MT_AUDIO_AVG_BYTES_PER_SECOND, UINT32{type.bytesPerSecond}, "Failed to set output bitrate: ");
  return output.type();
}

bool SetInputType(MFPlatform& platform, IMFSinkWriter& writer, DWORD stream, IMFMediaType& type,
                  IMFDXGIDeviceManager* manager) {
  if (manager == nullptr) {
    Logger::Info("Device manager not available for video stream");
    return SucceededOrLog(writer.SetInputMediaType(stream, &type, nullptr),
                          "Failed to set input media type: ");
  }
  ComPtr<IMFAttributes> attributes;
  const bool set = SucceededOrLog(platform.CreateAttributes(attributes.GetAddressOf(), 1),
                                  "Failed to create attributes: ") &&
                   SucceededOrLog(attributes->SetUnknown(MF_SINK_WRITER_D3D_MANAGER, manager),
                                  "Failed to set device manager attribute: ") &&
                   SucceededOrLog(writer.SetInputMediaType(stream, &type, attributes.Get()),
                                  "Failed to set input media type with device manager: ");
  if (set) {
    Logger::Info("Successfully set device manager for video stream");
  }
  return set;
}

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

/// How a device's samples are called. None for a tag that is neither floating point nor PCM.
std::optional<GUID> InputSubtype(const WaveFormat& format) {
  switch (format.formatTag) {
    case WaveFormat::kIeeeFloatTag:
      return MFAudioFormat_Float;
    case WaveFormat::kPcmTag:
      return MFAudioFormat_PCM;
    case WaveFormat::kExtensibleTag:
      return format.floatingPoint ? MFAudioFormat_Float : MFAudioFormat_PCM;
    default:
      return std::nullopt;
  }
}

std::optional<GUID> ReportedSubtype(const WaveFormat& format) {
  const auto subtype = InputSubtype(format);
  if (!subtype) {
    Logger::Error("Unsupported audio format tag: " + std::to_string(format.formatTag));
    return std::nullopt;
  }
  Logger::Info(*subtype == MFAudioFormat_Float ? "Input audio subtype set to MFAudioFormat_Float"
                                               : "Input audio subtype set to MFAudioFormat_PCM");
  return subtype;
}

std::string Describe(const AacType& type) {
  return std::to_string(type.sampleRate) + " Hz, " + std::to_string(type.channels) + " channels, " +
         std::to_string(8 * type.bytesPerSecond) + " bit/s";
}

/// The encoded sound that such samples ask for.
AacType WantedAacType(const WaveFormat& format, std::int32_t bitrate) {
  return {format.sampleRate, format.channels, static_cast<std::uint32_t>(bitrate / 8)};
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

std::optional<VideoSinkStream> AddVideoStream(MFPlatform& platform, IMFSinkWriter& writer,
                                              const CaptureSettings& settings, std::uint32_t width,
                                              std::uint32_t height, IMFDXGIDeviceManager* manager) {
  DWORD stream = 0;
  const auto output = MakeVideoOutputType(platform, settings, width, height);
  if (output == nullptr ||
      !SucceededOrLog(writer.AddStream(output.Get(), &stream), "Failed to add video stream: ")) {
    return std::nullopt;
  }
  const auto input = MakeVideoInputType(platform, settings, width, height);
  if (input == nullptr || !SetInputType(platform, writer, stream, *input.Get(), manager)) {
    return std::nullopt;
  }
  return VideoSinkStream{stream, width, height};
}

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
  const auto input = MakeAudioInputType(platform, format, *subtype);
  if (input == nullptr) {
    return {};
  }
  const auto type = ChooseAacType(platform, WantedAacType(format, bitrate));
  if (!type) {
    return {};
  }
  const auto output = MakeAudioOutputType(platform, *type);
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
