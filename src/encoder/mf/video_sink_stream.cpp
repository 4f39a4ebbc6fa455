#include "encoder/mf/video_sink_stream.h"

#include "common/hresult_failure.h"
#include "common/logger.h"
#include "encoder/mf/media_types.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

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

}  // namespace

std::optional<VideoSinkStream> AddVideoStream(MFPlatform& platform, IMFSinkWriter& writer,
                                              const CaptureSettings& settings, std::uint32_t width,
                                              std::uint32_t height, IMFDXGIDeviceManager* manager) {
  DWORD stream = 0;
  const auto output = MakeMediaType(platform, VideoOutputAttributes(settings, width, height),
                                    "Failed to create media type: ");
  if (output == nullptr ||
      !SucceededOrLog(writer.AddStream(output.Get(), &stream), "Failed to add video stream: ")) {
    return std::nullopt;
  }
  const auto input = MakeMediaType(platform, VideoInputAttributes(settings, width, height),
                                   "Failed to create input media type: ");
  if (input == nullptr || !SetInputType(platform, writer, stream, *input.Get(), manager)) {
    return std::nullopt;
  }
  return VideoSinkStream{stream, width, height};
}

}  // namespace brisolte
