#include "audio/audio_devices.h"

#include <mmdeviceapi.h>
#include <propsys.h>
#include <wrl/client.h>

// Defines the property keys of the header after it, in this file only.
#include <initguid.h>

#include <functiondiscoverykeys_devpkey.h>

#include <optional>
#include <string>
#include <string_view>

#include "audio/co_task_memory.h"
#include "common/com_apartment.h"
#include "common/given_object.h"
#include "common/hresult_failure.h"
#include "common/logger.h"
#include "common/text.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

/// A property's value, cleared at the end.
class PropertyValue {
 public:
  PropertyValue() = default;
  PropertyValue(const PropertyValue&) = delete;
  PropertyValue& operator=(const PropertyValue&) = delete;
  ~PropertyValue() { PropVariantClear(&value_); }

  PROPVARIANT* address() { return &value_; }

  std::optional<std::wstring> text() const {
    if (value_.vt != VT_LPWSTR || value_.pwszVal == nullptr) {
      return std::nullopt;
    }
    return value_.pwszVal;
  }

 private:
  PROPVARIANT value_{};  // zeroed: VT_EMPTY
};

HRESULT GetId(IMMDevice& device, std::string& id) {
  wchar_t* raw = nullptr;
  const HRESULT result = Given(device.GetId(&raw), raw);
  const CoTaskMemory<wchar_t> wide(raw);
  id = wide != nullptr ? ToUtf8(wide.get()) : std::string();
  return result;
}

/// The default endpoint's id; empty when there is none.
std::string DefaultDeviceId(IMMDeviceEnumerator& enumerator, EDataFlow flow) {
  ComPtr<IMMDevice> device;
  std::string id;
  // People choose a headset for talking apart from the one for listening; it is the one they will speak into.
  const ERole role = flow == eCapture ? eCommunications : eConsole;
  if (FAILED(Given(enumerator.GetDefaultAudioEndpoint(flow, role, &device), device)) ||
      FAILED(GetId(*device.Get(), id))) {
    return {};
  }
  return id;
}

std::string FriendlyName(IPropertyStore& properties) {
  PropertyValue value;
  const HRESULT result = properties.GetValue(PKEY_Device_FriendlyName, value.address());
  const auto text = value.text();
  return SUCCEEDED(result) && text ? ToUtf8(*text) : "Unknown";
}

std::optional<AudioDeviceInfo> DescribeDevice(IMMDeviceCollection& devices, UINT index) {
  const std::string place = "at index " + std::to_string(index) + ": ";
  ComPtr<IMMDevice> device;
  if (!SucceededOrLog(Given(devices.Item(index, &device), device), "Failed to get device " + place)) {
    return std::nullopt;
  }
  AudioDeviceInfo info;
  if (!SucceededOrLog(GetId(*device.Get(), info.id), "Failed to get device ID for device " + place)) {
    return std::nullopt;
  }
  ComPtr<IPropertyStore> properties;
  if (const HRESULT result = Given(device->OpenPropertyStore(STGM_READ, &properties), properties);
      FAILED(result)) {
    Logger::Warning(HResultFailure("Failed to open property store for device " + place, result));
    return std::nullopt;
  }
  info.name = FriendlyName(*properties.Get());
  return info;
}

std::vector<AudioDeviceInfo> DescribeDevices(IMMDeviceEnumerator& enumerator, AudioDataFlow dataFlow) {
  const auto flow = static_cast<EDataFlow>(dataFlow);
  ComPtr<IMMDeviceCollection> devices;
  if (!SucceededOrLog(Given(enumerator.EnumAudioEndpoints(flow, DEVICE_STATE_ACTIVE, &devices), devices),
                      "Failed to enumerate audio endpoints: ")) {
    return {};
  }
  UINT count = 0;
  if (!SucceededOrLog(devices->GetCount(&count), "Failed to get device count: ")) {
    return {};
  }
  const std::string defaultId = DefaultDeviceId(enumerator, flow);
  std::vector<AudioDeviceInfo> list;
  for (UINT index = 0; index < count; ++index) {
    if (auto info = DescribeDevice(*devices.Get(), index)) {
      info->isDefault = !defaultId.empty() && info->id == defaultId;
      info->dataFlow = dataFlow;
      list.push_back(std::move(*info));
    }
  }
  const std::string_view word = dataFlow == AudioDataFlow::kCapture ? "microphone" : "speaker";
  Logger::Info("Enumerated " + std::to_string(list.size()) + " " + std::string(word) + " devices");
  return list;
}

}  // namespace

std::vector<AudioDeviceInfo> EnumerateAudioDevices(AudioDataFlow dataFlow) {
  const ComApartment com(COINIT_APARTMENTTHREADED);
  if (!SucceededOrLog(com.result(), "COM library initialization failed for EnumerateAudioDevices: ")) {
    return {};
  }
  ComPtr<IMMDeviceEnumerator> enumerator;
  if (!SucceededOrLog(Given(CoCreateInstance(__uuidof(MMDeviceEnumerator), nullptr, CLSCTX_ALL,
                                             IID_PPV_ARGS(&enumerator)),
                            enumerator),
                      "Failed to create device enumerator for EnumerateAudioDevices: ")) {
    return {};
  }
  return DescribeDevices(*enumerator.Get(), dataFlow);
}

}  // namespace brisolte
