#include <mfapi.h>
#include <mferror.h>
#include <mfidl.h>
#include <wrl/client.h>

#include "shared/faults.h"
#include "sink_writer/aac_formats.h"

namespace brisolte::standins {
namespace {

using Microsoft::WRL::ComPtr;

HRESULT AddType(IMFCollection& types, const AacFormat& format) {
  constexpr UINT32 kBitsPerSample = 16;
  ComPtr<IMFMediaType> type;
  HRESULT result = MFCreateMediaType(type.GetAddressOf());
  if (SUCCEEDED(result)) {
    type->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Audio);
    type->SetGUID(MF_MT_SUBTYPE, MFAudioFormat_AAC);
    type->SetUINT32(MF_MT_AUDIO_NUM_CHANNELS, format.channels);
    type->SetUINT32(MF_MT_AUDIO_SAMPLES_PER_SECOND, format.sampleRate);
    type->SetUINT32(MF_MT_AUDIO_BITS_PER_SAMPLE, kBitsPerSample);
    type->SetUINT32(MF_MT_AUDIO_AVG_BYTES_PER_SECOND, format.bytesPerSecond);
    result = types.AddElement(type.Get());
  }
  return result;
}

HRESULT ListAll(IMFCollection& types) {
  HRESULT result = S_OK;
  for (const std::uint32_t rate : kAacRates) {
    for (const std::uint32_t channels : kAacChannels) {
      for (const std::uint32_t bytes : kAacBytesPerSecond) {
        if (SUCCEEDED(result)) {
          result = AddType(types, {rate, channels, bytes * AacBytesFactor(channels)});
        }
      }
    }
  }
  return result;
}

}  // namespace
}  // namespace brisolte::standins

using namespace brisolte::standins;

extern "C" HRESULT WINAPI MFTranscodeGetAudioOutputAvailableTypes(REFGUID subtype, DWORD /*flags*/,
                                                                  IMFAttributes* /*codec*/,
                                                                  IMFCollection** types) {
  if (types == nullptr) {
    return E_POINTER;
  }
  *types = nullptr;
  if (const auto fault = TakeFault("GetAudioOutputAvailableTypes")) {
    return *fault;
  }
  if (subtype != MFAudioFormat_AAC) {
    return MF_E_TRANSCODE_NO_MATCHING_ENCODER;
  }
  ComPtr<IMFCollection> found;
  HRESULT result = MFCreateCollection(found.GetAddressOf());
  if (SUCCEEDED(result)) {
    result = ListAll(*found.Get());
  }
  if (SUCCEEDED(result)) {
    *types = found.Detach();
  }
  return result;
}
