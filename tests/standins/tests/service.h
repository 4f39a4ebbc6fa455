#pragma once

#include <d3d11.h>
#include <windows.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "capture/closed_handler.h"
#include "shared/com_object.h"

namespace brisolte::standins {

/// Waits until the condition holds; false when it does not within five seconds.
bool Eventually(const std::function<bool()>& condition);
/// Whether the condition stays untrue for so long.
bool Never(std::chrono::milliseconds period, const std::function<bool()>& condition);

/// Rules of the stand-ins for as long as it is alive.
class Faults {
 public:
  explicit Faults(const std::string& rules);
  ~Faults();
  Faults(const Faults&) = delete;
  Faults& operator=(const Faults&) = delete;
  Faults(Faults&&) = delete;
  Faults& operator=(Faults&&) = delete;
};

/// Live objects of `GraphicsCapture.dll` or `d3d11.dll`.
long LiveObjects(const wchar_t* dll);

/// How often the process let go of COM after it had used the service.
long ComLetGoCount();

struct Device {
  ComPtr<ID3D11Device> device;
  ComPtr<ID3D11DeviceContext> context;
  ComPtr<abi::IDirect3DDevice> winrt;
};
Device MakeDevice();

ComPtr<abi::IGraphicsCaptureItemInterop> ItemInterop();
ComPtr<abi::IDirect3D11CaptureFramePoolStatics2> PoolStatics();
ComPtr<abi::IGraphicsCaptureItem> ItemFor(HWND window);
ComPtr<abi::IGraphicsCaptureItem> ItemFor(HMONITOR monitor);
HMONITOR PrimaryMonitor();

HRESULT Close(IUnknown* object);

/// A handler that runs a function, for `FrameArrived` and for `Closed`.
class FrameHandler final : public ComObject<abi::IFrameArrivedHandler> {
 public:
  explicit FrameHandler(std::function<void(abi::IDirect3D11CaptureFramePool*)> work)
      : work_(std::move(work)) {}
  HRESULT STDMETHODCALLTYPE Invoke(abi::IDirect3D11CaptureFramePool* sender,
                                   IInspectable* /*args*/) override {
    work_(sender);
    return S_OK;
  }

 private:
  std::function<void(abi::IDirect3D11CaptureFramePool*)> work_;
};

class CloseCounter final : public ComObject<abi::IClosedHandler> {
 public:
  HRESULT STDMETHODCALLTYPE Invoke(abi::IGraphicsCaptureItem* /*sender*/, IInspectable* /*args*/) override {
    ++count;
    return S_OK;
  }
  std::atomic<int> count{0};
};

/// A pool, and a session on an item that has not been started.
struct Capture {
  Device device;
  ComPtr<abi::IDirect3D11CaptureFramePool> pool;
  ComPtr<abi::IGraphicsCaptureSession> session;

  Capture() = default;
  Capture(const Capture&) = delete;
  Capture& operator=(const Capture&) = delete;
  Capture(Capture&&) = default;
  Capture& operator=(Capture&&) = default;
  ~Capture();

  ComPtr<abi::IDirect3D11CaptureFrame> Next() const;
  /// The next frame, after waiting for it; null when none comes.
  ComPtr<abi::IDirect3D11CaptureFrame> Await() const;
  /// Takes frames until one shows this colour (0xRRGGBB) at this place. False when none does.
  bool AwaitColor(int x, int y, std::uint32_t rgb) const;
};
Capture MakeCapture(const ComPtr<abi::IGraphicsCaptureItem>& item, abi::SizeInt32 size, INT32 buffers = 2);

/// A texture's picture in memory.
struct Picture {
  std::vector<std::uint8_t> bytes;
  UINT pitch = 0;
  D3D11_TEXTURE2D_DESC desc{};

  std::uint32_t Rgb(int x, int y) const;
};
Picture Read(const Device& device, ID3D11Texture2D* texture);
Picture Read(const Device& device, abi::IDirect3D11CaptureFrame* frame);

}  // namespace brisolte::standins
