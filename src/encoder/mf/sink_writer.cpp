#include "encoder/mf/sink_writer.h"

#include <mfapi.h>
#include <mferror.h>

#include "common/full_path.h"
#include "common/hresult_failure.h"
#include "common/logger.h"

namespace brisolte {

using Microsoft::WRL::ComPtr;

ComPtr<IMFSinkWriter> MakeSinkWriter(MediaFoundation& platform, const std::string& path) {
  Logger::Info("Initializing MFEncoder writer...");
  ComPtr<IMFAttributes> attributes;
  ComPtr<IMFSinkWriter> writer;
  const bool made =
      SucceededOrLog(platform.CreateAttributes(attributes.GetAddressOf(), 1),
                     "Failed to create attributes: ") &&
      SucceededOrLog(attributes->SetGUID(MF_TRANSCODE_CONTAINERTYPE, MFTranscodeContainerType_MPEG4),
                     "Failed to set container type: ") &&
      SucceededOrLog(platform.CreateSinkWriterFromURL(FullFilePath(path).c_str(), attributes.Get(),
                                                      writer.GetAddressOf()),
                     "Failed to create sink writer: ");
  if (!made) {
    return nullptr;
  }
  Logger::Info("MFEncoder writer initialized successfully");
  return writer;
}

ComPtr<IMFMediaSink> MediaSinkOf(IMFSinkWriter& writer) {
  ComPtr<IMFMediaSink> sink;
  const HRESULT result =
      writer.GetServiceForStream(static_cast<DWORD>(MF_SINK_WRITER_MEDIASINK), GUID_NULL,
                                 __uuidof(IMFMediaSink), reinterpret_cast<void**>(sink.GetAddressOf()));
  return SUCCEEDED(result) ? sink : nullptr;
}

void CloseFile(IMFMediaSink& sink) {
  const HRESULT result = sink.Shutdown();
  // A failure of the sink writer may have shut it down already.
  if (result != MF_E_SHUTDOWN) {
    SucceededOrLog(result, "Failed to shut down media sink: ");
  }
}

}  // namespace brisolte
