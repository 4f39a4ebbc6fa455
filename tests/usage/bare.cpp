// Tells what calls that a recording makes cost of the system's own, as one line of JSON.
// bare ROUNDS: of each call the handles or the bytes that are there afterwards, though all that it gave has
// been released, and of the long one how long it takes. bare commands: the bytes that many commands of a
// device leave while it lives, and as many again.

#include <windows.h>
// After windows.h, which declares what they need.
#include <d3d11.h>
#include <psapi.h>
#include <roapi.h>
#include <unknwn.h>
#include <winstring.h>
#include <wrl/client.h>

#include <chrono>
#include <iostream>
#include <string_view>

#include "common/mta_usage.h"
#include "support/command_line.h"
#include "usage/handle_count.h"

namespace {

constexpr unsigned long kTimedDevices = 10;
// Enough for a ring of many megabytes to come round.
constexpr int kFrames = 200'000;
constexpr std::wstring_view kClass = L"Windows.Graphics.Capture.GraphicsCaptureItem";

void AskForFactory() {
  HSTRING_HEADER header{};
  HSTRING name = nullptr;
  if (SUCCEEDED(
          WindowsCreateStringReference(kClass.data(), static_cast<UINT32>(kClass.size()), &header, &name))) {
    Microsoft::WRL::ComPtr<IUnknown> factory;
    RoGetActivationFactory(name, __uuidof(IUnknown), reinterpret_cast<void**>(factory.GetAddressOf()));
  }
}

struct Device {
  Microsoft::WRL::ComPtr<ID3D11Device> device;
  Microsoft::WRL::ComPtr<ID3D11DeviceContext> context;
};

Device MakeDevice() {
  Device made;
  D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, D3D11_CREATE_DEVICE_BGRA_SUPPORT, nullptr, 0,
                    D3D11_SDK_VERSION, made.device.GetAddressOf(), nullptr, made.context.GetAddressOf());
  return made;
}

double Handles() {
  return static_cast<double>(brisolte::CountHandles(GetCurrentProcessId()).value_or(0));
}

double PrivateBytes() {
  PROCESS_MEMORY_COUNTERS memory{};
  memory.cb = sizeof(memory);
  GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof(memory));
  return static_cast<double>(memory.PagefileUsage);
}

void MakeAndReleaseDevice() {
  MakeDevice();
}

Microsoft::WRL::ComPtr<ID3D11Texture2D> MakeTexture(ID3D11Device& device, D3D11_USAGE usage) {
  D3D11_TEXTURE2D_DESC description{};
  description.Width = 64;
  description.Height = 64;
  description.MipLevels = 1;
  description.ArraySize = 1;
  description.Format = DXGI_FORMAT_B8G8R8A8_UNORM;
  description.SampleDesc.Count = 1;
  description.Usage = usage;
  description.BindFlags = usage == D3D11_USAGE_DEFAULT ? D3D11_BIND_RENDER_TARGET : 0;
  description.CPUAccessFlags = usage == D3D11_USAGE_STAGING ? D3D11_CPU_ACCESS_READ : 0;
  Microsoft::WRL::ComPtr<ID3D11Texture2D> texture;
  device.CreateTexture2D(&description, nullptr, texture.GetAddressOf());
  return texture;
}

/// A device that reads frames back, as a recording does.
class Reading {
 public:
  /// The bytes that so many frames leave beside those of earlier calls.
  double Leave(int frames) {
    const double before = PrivateBytes();
    for (int i = 0; i < frames; ++i) {
      device_.context->CopyResource(staging_.Get(), frame_.Get());
      D3D11_MAPPED_SUBRESOURCE mapped{};
      device_.context->Map(staging_.Get(), 0, D3D11_MAP_READ, 0, &mapped);
      device_.context->Unmap(staging_.Get(), 0);
    }
    return PrivateBytes() - before;
  }

 private:
  Device device_ = MakeDevice();
  Microsoft::WRL::ComPtr<ID3D11Texture2D> frame_ = MakeTexture(*device_.device.Get(), D3D11_USAGE_DEFAULT);
  Microsoft::WRL::ComPtr<ID3D11Texture2D> staging_ = MakeTexture(*device_.device.Get(), D3D11_USAGE_STAGING);
};

/// Of a device that is made and released.
double MillisecondsOfDevice(unsigned long rounds) {
  const auto start = std::chrono::steady_clock::now();
  for (unsigned long round = 0; round < rounds; ++round) {
    MakeAndReleaseDevice();
  }
  const std::chrono::duration<double, std::milli> passed = std::chrono::steady_clock::now() - start;
  return passed.count() / static_cast<double>(rounds);
}

/// What each of the later three quarters of the calls leaves, as `read` tells it; the first quarter warms up.
double KeptByEach(unsigned long rounds, double (*read)(), void (*call)()) {
  const unsigned long warm = rounds / 4;
  double before = 0;
  for (unsigned long round = 0; round < rounds; ++round) {
    if (round == warm) {
      before = read();
    }
    call();
  }
  return (read() - before) / static_cast<double>(rounds - warm);
}

void TellOfCommands() {
  Reading reading;
  reading.Leave(kFrames / 100);  // what is made for the first of them
  const double first = reading.Leave(kFrames);
  std::cout << "{\"commands\":[" << first << ',' << reading.Leave(kFrames) << "]}\n";
}

void TellOfCalls(unsigned long rounds) {
  std::cout << "{\"RoGetActivationFactory\":" << KeptByEach(rounds, Handles, AskForFactory)
            << ",\"D3D11CreateDevice\":" << KeptByEach(rounds, PrivateBytes, MakeAndReleaseDevice)
            << ",\"D3D11CreateDeviceMilliseconds\":" << MillisecondsOfDevice(kTimedDevices) << "}\n";
}

}  // namespace

int main() {
  const auto words = brisolte::testing::CommandLineArguments();
  const bool commands = words.size() == 1 && words[0] == L"commands";
  const unsigned long rounds = words.size() == 1 ? wcstoul(words[0].c_str(), nullptr, 10) : 0;
  brisolte::MtaUsage apartment;
  if ((rounds == 0 && !commands) || FAILED(apartment.Hold())) {
    std::cerr << "usage: bare ROUNDS|commands\n";
    return 2;
  }
  if (commands) {
    TellOfCommands();
  } else {
    TellOfCalls(rounds);
  }
  return 0;
}
