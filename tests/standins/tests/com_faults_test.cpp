#include <audioclient.h>
#include <gtest/gtest.h>
#include <mmdeviceapi.h>
#include <wincodec.h>

#include <array>
#include <cstdint>

#include "shared/com_object.h"
#include "support/exported_function.h"
#include "tests/service.h"

namespace brisolte::standins {

namespace {

template <typename Interface>
void** Out(ComPtr<Interface>& pointer) {
  return reinterpret_cast<void**>(pointer.ReleaseAndGetAddressOf());
}

HRESULT FindFactory(REFCLSID clsid, ComPtr<IClassFactory>& factory) {
  using Function = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
  const HMODULE module = LoadLibraryW(L"C:\\standins\\com_faults.dll");
  const auto getClassObject = ExportedFunction<Function>(module, "DllGetClassObject");
  return getClassObject(clsid, __uuidof(IClassFactory), Out(factory));
}

template <typename Interface>
HRESULT Create(REFCLSID clsid, ComPtr<Interface>& object) {
  ComPtr<IClassFactory> factory;
  const HRESULT found = FindFactory(clsid, factory);
  return FAILED(found) ? found : factory->CreateInstance(nullptr, __uuidof(Interface), Out(object));
}

ComPtr<IMMDevice> DefaultDevice(EDataFlow flow) {
  ComPtr<IMMDeviceEnumerator> enumerator;
  ComPtr<IMMDevice> device;
  EXPECT_EQ(Create(__uuidof(MMDeviceEnumerator), enumerator), S_OK);
  EXPECT_EQ(enumerator->GetDefaultAudioEndpoint(flow, eConsole, device.GetAddressOf()), S_OK);
  return device;
}

ComPtr<IAudioClient> Client(EDataFlow flow) {
  ComPtr<IAudioClient> client;
  EXPECT_EQ(DefaultDevice(flow)->Activate(__uuidof(IAudioClient), CLSCTX_ALL, nullptr, Out(client)), S_OK);
  return client;
}

HRESULT Open(IAudioClient& client, DWORD flags) {
  WAVEFORMATEX* format = nullptr;
  const HRESULT asked = client.GetMixFormat(&format);
  const HRESULT opened =
      FAILED(asked) ? asked : client.Initialize(AUDCLNT_SHAREMODE_SHARED, flags, 0, 0, format, nullptr);
  CoTaskMemFree(format);
  return opened;
}

HRESULT AskBufferSize(IAudioClient& client) {
  UINT32 frames = 0;
  return client.GetBufferSize(&frames);
}

TEST(ComFaults, StandForNoOtherClass) {
  ComPtr<IClassFactory> factory;
  EXPECT_EQ(FindFactory(CLSID_WICPngEncoder, factory), CLASS_E_CLASSNOTAVAILABLE);
  EXPECT_EQ(factory, nullptr);
}

TEST(ComFaults, LetTheMakingOfAnObjectFail) {
  const Faults faults("CreateDeviceEnumerator 0x80070005 times 1");
  ComPtr<IMMDeviceEnumerator> enumerator;
  EXPECT_EQ(Create(__uuidof(MMDeviceEnumerator), enumerator), E_ACCESSDENIED);
  EXPECT_EQ(enumerator, nullptr);
  EXPECT_EQ(Create(__uuidof(MMDeviceEnumerator), enumerator), S_OK);
}

TEST(ComFaults, ClearTheResultsOfACallThatFailsOrGivesNothing) {
  const auto device = DefaultDevice(eRender);
  const Faults faults("GetDeviceId 0x80070005 times 1\nActivateDevice 0");
  wchar_t left = 0;
  wchar_t* id = &left;
  EXPECT_EQ(device->GetId(&id), E_ACCESSDENIED);
  EXPECT_EQ(id, nullptr);
  void* client = &left;
  EXPECT_EQ(device->Activate(__uuidof(IAudioClient), CLSCTX_ALL, nullptr, &client), S_OK);
  EXPECT_EQ(client, nullptr);
  EXPECT_EQ(device->GetId(&id), S_OK);
  EXPECT_NE(id, nullptr);
  CoTaskMemFree(id);
}

TEST(ComFaults, TellTheMicrophoneFromTheSpeaker) {
  const Faults faults("microphone:GetMixFormat 0x80070005");
  EXPECT_EQ(Open(*Client(eCapture).Get(), 0), E_ACCESSDENIED);
  EXPECT_EQ(Open(*Client(eRender).Get(), AUDCLNT_STREAMFLAGS_LOOPBACK), S_OK);
}

TEST(ComFaults, TellWhatPlaysFromWhatRecordsIt) {
  const auto recording = Client(eRender);
  const auto player = Client(eRender);
  ASSERT_EQ(Open(*recording.Get(), AUDCLNT_STREAMFLAGS_LOOPBACK), S_OK);
  ASSERT_EQ(Open(*player.Get(), 0), S_OK);
  {
    const Faults faults("player:GetBufferSize 0x80070005");
    EXPECT_EQ(AskBufferSize(*player.Get()), E_ACCESSDENIED);
    EXPECT_EQ(AskBufferSize(*recording.Get()), S_OK);
  }
  const Faults faults("speaker:GetBufferSize 0x80070005");
  EXPECT_EQ(AskBufferSize(*player.Get()), S_OK);
  EXPECT_EQ(AskBufferSize(*recording.Get()), E_ACCESSDENIED);
}

TEST(ComFaults, LeaveOutWhatWinesObjectsCallOfOneAnother) {
  ComPtr<IWICImagingFactory> factory;
  ComPtr<IWICStream> stream;
  ComPtr<IWICBitmapEncoder> encoder;
  ComPtr<IWICBitmapFrameEncode> frame;
  ComPtr<IWICBitmap> bitmap;
  std::array<std::uint8_t, 4096> png{};
  ASSERT_EQ(Create(CLSID_WICImagingFactory, factory), S_OK);
  ASSERT_EQ(factory->CreateStream(stream.GetAddressOf()), S_OK);
  ASSERT_EQ(stream->InitializeFromMemory(png.data(), png.size()), S_OK);
  ASSERT_EQ(factory->CreateEncoder(GUID_ContainerFormatPng, nullptr, encoder.GetAddressOf()), S_OK);
  ASSERT_EQ(encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache), S_OK);
  ASSERT_EQ(encoder->CreateNewFrame(frame.GetAddressOf(), nullptr), S_OK);
  ASSERT_EQ(frame->Initialize(nullptr), S_OK);
  ASSERT_EQ(
      factory->CreateBitmap(2, 2, GUID_WICPixelFormat32bppBGRA, WICBitmapCacheOnLoad, bitmap.GetAddressOf()),
      S_OK);
  const Faults faults("SetFrameSize 0x80070005 times 1");
  EXPECT_EQ(frame->WriteSource(bitmap.Get(), nullptr), S_OK) << "which sets the size itself";
  EXPECT_EQ(frame->SetSize(2, 2), E_ACCESSDENIED);
}

}  // namespace

}  // namespace brisolte::standins
