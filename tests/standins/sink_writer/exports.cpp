#include <mfidl.h>
#include <mfreadwrite.h>

#include <string>

#include "shared/com_object.h"
#include "shared/faults.h"
#include "sink_writer/sink_writer.h"

namespace brisolte::standins {
namespace {

std::string Utf8(const wchar_t* text) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, text, -1, nullptr, 0, nullptr, nullptr);
  std::string converted(static_cast<std::size_t>(size > 0 ? size - 1 : 0), '\0');
  WideCharToMultiByte(CP_UTF8, 0, text, -1, converted.data(), size, nullptr, nullptr);
  return converted;
}

}  // namespace
}  // namespace brisolte::standins

using namespace brisolte::standins;

extern "C" {

HRESULT WINAPI MFCreateSinkWriterFromURL(LPCWSTR url, IMFByteStream* stream, IMFAttributes* attributes,
                                         IMFSinkWriter** writer) {
  if (writer == nullptr || url == nullptr || stream != nullptr) {
    return E_INVALIDARG;
  }
  *writer = nullptr;
  if (const auto fault = TakeFault("CreateSinkWriter")) {
    return *fault;
  }
  GUID container = GUID_NULL;
  if (attributes == nullptr || FAILED(attributes->GetGUID(MF_TRANSCODE_CONTAINERTYPE, &container)) ||
      container != MFTranscodeContainerType_MPEG4) {
    return E_INVALIDARG;
  }
  ComPtr<IMFSinkWriter> made = MakeSinkWriter(Utf8(url));
  if (made == nullptr) {
    return HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
  }
  *writer = made.Detach();
  return S_OK;
}

/// Objects of this stand-in that are alive.
long StandinObjectCount() {
  return liveObjects;
}
}
