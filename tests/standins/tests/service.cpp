#include "tests/service.h"

#include <roapi.h>

#include <cstring>
#include <stdexcept>
#include <thread>

#include "support/exported_function.h"

namespace brisolte::standins {

namespace {

constexpr const wchar_t* kFaultsFile = L"C:\\standin-faults.txt";

void Check(HRESULT result, const char* what) {
  if (FAILED(result)) {
    throw std::runtime_error(std::string(what) + " failed with " + std::to_string(result));
  }
}

template <typename Interface>
void** Out(ComPtr<Interface>& pointer) {
  return reinterpret_cast<void**>(pointer.ReleaseAndGetAddressOf());
}

template <typename Interface>
ComPtr<Interface> Factory(const wchar_t* name) {
  HSTRING text = nullptr;
  WindowsCreateString(name, static_cast<UINT32>(std::wcslen(name)), &text);
  ComPtr<Interface> factory;
  const HRESULT found = RoGetActivationFactory(text, Interface::kIid, Out(factory));
  WindowsDeleteString(text);
  Check(found, "RoGetActivationFactory");
  return factory;
}

}  // namespace

bool Eventually(const std::function<bool()>& condition) {
  for (const auto end = GetTickCount64() + 5000; GetTickCount64() < end; Sleep(2)) {
    if (condition()) {
      return true;
    }
  }
  return condition();
}

bool Never(std::chrono::milliseconds period, const std::function<bool()>& condition) {
  for (const auto end = GetTickCount64() + static_cast<ULONGLONG>(period.count()); GetTickCount64() < end;
       Sleep(2)) {
    if (condition()) {
      return false;
    }
  }
  return true;
}

Faults::Faults(const std::string& rules) {
  HANDLE file = CreateFileW(kFaultsFile, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  DWORD written = 0;
  WriteFile(file, rules.data(), static_cast<DWORD>(rules.size()), &written, nullptr);
  CloseHandle(file);
}

Faults::~Faults() {
  DeleteFileW(kFaultsFile);
}

long LiveObjects(const wchar_t* dll) {
  using Count = long (*)();
  return ExportedFunction<Count>(GetModuleHandleW(dll), "StandinObjectCount")();
}

long ComLetGoCount() {
  using Count = long (*)();
  return ExportedFunction<Count>(GetModuleHandleW(L"GraphicsCapture.dll"), "StandinComLetGoCount")();
}

Device MakeDevice() {
  Device made;
  Check(D3D11CreateDevice(nullptr, D3D_DRIVER_TYPE_HARDWARE, nullptr, D3D11_CREATE_DEVICE_BGRA_SUPPORT,
                          nullptr, 0, D3D11_SDK_VERSION, made.device.GetAddressOf(), nullptr,
                          made.context.GetAddressOf()),
        "D3D11CreateDevice");
  using Wrap = HRESULT(WINAPI*)(IDXGIDevice*, IInspectable**);
  const auto wrap =
      ExportedFunction<Wrap>(GetModuleHandleW(L"d3d11.dll"), "CreateDirect3D11DeviceFromDXGIDevice");
  ComPtr<IDXGIDevice> inner;
  ComPtr<IInspectable> wrapped;
  Check(made.device.As(&inner), "QueryInterface");
  Check(wrap(inner.Get(), wrapped.GetAddressOf()), "CreateDirect3D11DeviceFromDXGIDevice");
  Check(wrapped->QueryInterface(abi::IDirect3DDevice::kIid, Out(made.winrt)), "QueryInterface");
  return made;
}

ComPtr<abi::IGraphicsCaptureItemInterop> ItemInterop() {
  return Factory<abi::IGraphicsCaptureItemInterop>(abi::kGraphicsCaptureItemClass);
}

ComPtr<abi::IDirect3D11CaptureFramePoolStatics2> PoolStatics() {
  return Factory<abi::IDirect3D11CaptureFramePoolStatics2>(abi::kFramePoolClass);
}

ComPtr<abi::IGraphicsCaptureItem> ItemFor(HWND window) {
  ComPtr<abi::IGraphicsCaptureItem> item;
  Check(ItemInterop()->CreateForWindow(window, abi::IGraphicsCaptureItem::kIid, Out(item)),
        "CreateForWindow");
  return item;
}

ComPtr<abi::IGraphicsCaptureItem> ItemFor(HMONITOR monitor) {
  ComPtr<abi::IGraphicsCaptureItem> item;
  Check(ItemInterop()->CreateForMonitor(monitor, abi::IGraphicsCaptureItem::kIid, Out(item)),
        "CreateForMonitor");
  return item;
}

HMONITOR PrimaryMonitor() {
  return MonitorFromPoint({0, 0}, MONITOR_DEFAULTTOPRIMARY);
}

HRESULT Close(IUnknown* object) {
  ComPtr<abi::IClosable> closable;
  const HRESULT found = object->QueryInterface(abi::IClosable::kIid, Out(closable));
  return FAILED(found) ? found : closable->Close();
}

Capture MakeCapture(const ComPtr<abi::IGraphicsCaptureItem>& item, abi::SizeInt32 size, INT32 buffers) {
  Capture made;
  made.device = MakeDevice();
  Check(PoolStatics()->CreateFreeThreaded(made.device.winrt.Get(),
                                          abi::DirectXPixelFormat::B8G8R8A8UIntNormalized, buffers, size,
                                          made.pool.GetAddressOf()),
        "CreateFreeThreaded");
  Check(made.pool->CreateCaptureSession(item.Get(), made.session.GetAddressOf()), "CreateCaptureSession");
  return made;
}

Capture::~Capture() {
  if (session != nullptr) {
    Close(session.Get());
  }
}

ComPtr<abi::IDirect3D11CaptureFrame> Capture::Next() const {
  ComPtr<abi::IDirect3D11CaptureFrame> frame;
  Check(pool->TryGetNextFrame(frame.GetAddressOf()), "TryGetNextFrame");
  return frame;
}

ComPtr<abi::IDirect3D11CaptureFrame> Capture::Await() const {
  ComPtr<abi::IDirect3D11CaptureFrame> frame;
  Eventually([&] { return (frame = Next()) != nullptr; });
  return frame;
}

bool Capture::AwaitColor(int x, int y, std::uint32_t rgb) const {
  return Eventually([&] {
    const auto frame = Next();
    return frame != nullptr && Read(device, frame.Get()).Rgb(x, y) == rgb;
  });
}

std::uint32_t Picture::Rgb(int x, int y) const {
  const auto* pixel = bytes.data() + static_cast<std::size_t>(y) * pitch + static_cast<std::size_t>(x) * 4;
  return static_cast<std::uint32_t>(pixel[2] << 16 | pixel[1] << 8 | pixel[0]);
}

Picture Read(const Device& device, ID3D11Texture2D* texture) {
  Picture picture;
  texture->GetDesc(&picture.desc);
  auto desc = picture.desc;
  desc.Usage = D3D11_USAGE_STAGING;
  desc.BindFlags = 0;
  desc.MiscFlags = 0;
  desc.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
  ComPtr<ID3D11Texture2D> staging;
  Check(device.device->CreateTexture2D(&desc, nullptr, staging.GetAddressOf()), "CreateTexture2D");
  device.context->CopyResource(staging.Get(), texture);
  D3D11_MAPPED_SUBRESOURCE mapped{};
  Check(device.context->Map(staging.Get(), 0, D3D11_MAP_READ, 0, &mapped), "Map");
  const UINT rows = desc.Format == DXGI_FORMAT_NV12 ? desc.Height * 3 / 2 : desc.Height;
  const auto* data = static_cast<const std::uint8_t*>(mapped.pData);
  picture.pitch = mapped.RowPitch;
  picture.bytes.assign(data, data + static_cast<std::size_t>(mapped.RowPitch) * rows);
  device.context->Unmap(staging.Get(), 0);
  return picture;
}

Picture Read(const Device& device, abi::IDirect3D11CaptureFrame* frame) {
  ComPtr<abi::IDirect3DSurface> surface;
  ComPtr<abi::IDirect3DDxgiInterfaceAccess> access;
  ComPtr<ID3D11Texture2D> texture;
  Check(frame->get_Surface(surface.GetAddressOf()), "get_Surface");
  Check(surface->QueryInterface(abi::IDirect3DDxgiInterfaceAccess::kIid, Out(access)), "QueryInterface");
  Check(access->GetInterface(__uuidof(ID3D11Texture2D), Out(texture)), "GetInterface");
  return Read(device, texture.Get());
}

}  // namespace brisolte::standins
