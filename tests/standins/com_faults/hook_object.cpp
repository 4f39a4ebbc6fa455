#include "com_faults/hook_object.h"

#include <audioclient.h>
#include <mmdeviceapi.h>
#include <propsys.h>
#include <wincodec.h>

#include <string_view>
#include <tuple>

#include "com_faults/fault_hook.h"
#include "com_faults/owners.h"
#include "shared/com_object.h"

namespace brisolte::standins {

namespace {

/// What plays on a speaker is no recording of it.
void NotePlayer(IAudioClient* self, AUDCLNT_SHAREMODE /*mode*/, DWORD flags, REFERENCE_TIME /*duration*/,
                REFERENCE_TIME /*periodicity*/, const WAVEFORMATEX* /*format*/, const GUID* /*session*/) {
  if (OwnerOf(self) == "speaker" && (flags & AUDCLNT_STREAMFLAGS_LOOPBACK) == 0) {
    SetOwner(self, "player");
  }
}

using Hooks = std::tuple<
    FaultHook<"EnumAudioEndpoints", 3, &IMMDeviceEnumerator::EnumAudioEndpoints>,
    FaultHook<"GetDefaultAudioEndpoint", 4, &IMMDeviceEnumerator::GetDefaultAudioEndpoint>,
    FaultHook<"GetDevice", 5, &IMMDeviceEnumerator::GetDevice>,
    FaultHook<"GetDeviceCount", 3, &IMMDeviceCollection::GetCount>,
    FaultHook<"GetDeviceAt", 4, &IMMDeviceCollection::Item>,
    FaultHook<"ActivateDevice", 3, &IMMDevice::Activate>,
    FaultHook<"OpenPropertyStore", 4, &IMMDevice::OpenPropertyStore>,
    FaultHook<"GetDeviceId", 5, &IMMDevice::GetId>, FaultHook<"GetDeviceState", 6, &IMMDevice::GetState>,
    FaultHook<"GetPropertyValue", 5, &IPropertyStore::GetValue>,
    FaultHook<"InitializeClient", 3, &IAudioClient::Initialize, NotePlayer>,
    FaultHook<"GetBufferSize", 4, &IAudioClient::GetBufferSize>,
    FaultHook<"GetCurrentPadding", 6, &IAudioClient::GetCurrentPadding>,
    FaultHook<"GetMixFormat", 8, &IAudioClient::GetMixFormat>,
    FaultHook<"StartClient", 10, &IAudioClient::Start>, FaultHook<"StopClient", 11, &IAudioClient::Stop>,
    FaultHook<"GetService", 14, &IAudioClient::GetService>,
    FaultHook<"GetCaptureBuffer", 3, &IAudioCaptureClient::GetBuffer>,
    FaultHook<"ReleaseCaptureBuffer", 4, &IAudioCaptureClient::ReleaseBuffer>,
    FaultHook<"GetNextPacketSize", 5, &IAudioCaptureClient::GetNextPacketSize>,
    FaultHook<"GetRenderBuffer", 3, &IAudioRenderClient::GetBuffer>,
    FaultHook<"ReleaseRenderBuffer", 4, &IAudioRenderClient::ReleaseBuffer>,
    FaultHook<"CreateEncoder", 8, &IWICImagingFactory::CreateEncoder>,
    FaultHook<"CreateStream", 14, &IWICImagingFactory::CreateStream>,
    FaultHook<"CreateBitmap", 17, &IWICImagingFactory::CreateBitmap>,
    FaultHook<"CreateBitmapFromMemory", 20, &IWICImagingFactory::CreateBitmapFromMemory>,
    FaultHook<"LockBitmap", 8, &IWICBitmap::Lock>, FaultHook<"GetStride", 4, &IWICBitmapLock::GetStride>,
    FaultHook<"GetDataPointer", 5, &IWICBitmapLock::GetDataPointer>,
    FaultHook<"InitializeFromFilename", 15, &IWICStream::InitializeFromFilename>,
    FaultHook<"InitializeEncoder", 3, &IWICBitmapEncoder::Initialize>,
    FaultHook<"CreateNewFrame", 10, &IWICBitmapEncoder::CreateNewFrame>,
    FaultHook<"CommitEncoder", 11, &IWICBitmapEncoder::Commit>,
    FaultHook<"InitializeFrame", 3, &IWICBitmapFrameEncode::Initialize>,
    FaultHook<"SetFrameSize", 4, &IWICBitmapFrameEncode::SetSize>,
    FaultHook<"SetFramePixelFormat", 6, &IWICBitmapFrameEncode::SetPixelFormat>,
    FaultHook<"WriteSource", 11, &IWICBitmapFrameEncode::WriteSource>,
    FaultHook<"CommitFrame", 12, &IWICBitmapFrameEncode::Commit>>;

/// Whose calls an endpoint's are, by the direction of its sound.
std::string_view OwnerOfDevice(IMMDevice& device) {
  ComPtr<IMMEndpoint> endpoint;
  EDataFlow flow = eRender;
  if (FAILED(
          device.QueryInterface(__uuidof(IMMEndpoint), reinterpret_cast<void**>(endpoint.GetAddressOf()))) ||
      FAILED(endpoint->GetDataFlow(&flow))) {
    return {};
  }
  return flow == eCapture ? "microphone" : "speaker";
}

}  // namespace

void HookObject(REFIID iid, void* object, const void* giver) {
  if (object == nullptr) {
    return;
  }
  SetOwner(object,
           iid == __uuidof(IMMDevice) ? OwnerOfDevice(*static_cast<IMMDevice*>(object)) : OwnerOf(giver));
  [&]<typename... Hook>(std::tuple<Hook...>*) {
    (Hook::Install(iid, object), ...);
  }(static_cast<Hooks*>(nullptr));
}

}  // namespace brisolte::standins
