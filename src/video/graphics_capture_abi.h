#pragma once

#include <inspectable.h>
#include <windows.h>

/// The binary interface of the Windows capture service, as far as the product uses it.
///
/// Not every Windows SDK declares it for plain COM, so it stands here: identifiers, and methods in the order
/// of their slots. Every method is `HRESULT __stdcall`; a method's last pointer argument is its result. The
/// names are those of the platform, in a namespace of our own so that a fuller SDK header beside this one
/// does not clash.
namespace brisolte::abi {

// Names and types are the platform's.
// NOLINTBEGIN(readability-identifier-naming, modernize-avoid-c-arrays)

struct IDirect3D11CaptureFrame;
struct IDirect3D11CaptureFramePool;
struct IDirect3DDevice;
struct IDirect3DSurface;
struct IGraphicsCaptureItem;
struct IGraphicsCaptureSession;

inline constexpr wchar_t kGraphicsCaptureItemClass[] = L"Windows.Graphics.Capture.GraphicsCaptureItem";
inline constexpr wchar_t kFramePoolClass[] = L"Windows.Graphics.Capture.Direct3D11CaptureFramePool";

struct SizeInt32 {
  INT32 Width;
  INT32 Height;
};

/// A time in units of 100 nanoseconds.
struct TimeSpan {
  INT64 Duration;
};

struct EventRegistrationToken {
  INT64 value;
};

enum class DirectXPixelFormat : INT32 { B8G8R8A8UIntNormalized = 87 };

struct Direct3DMultisampleDescription {
  INT32 Count;
  INT32 Quality;
};

struct Direct3DSurfaceDescription {
  INT32 Width;
  INT32 Height;
  DirectXPixelFormat Format;
  Direct3DMultisampleDescription MultisampleDescription;
};

/// Marks an object that any thread may call without marshalling.
struct IAgileObject : IUnknown {
  static constexpr IID kIid{0x94EA2B94, 0xE9CC, 0x49E0, {0xC0, 0xFF, 0xEE, 0x64, 0xCA, 0x8F, 0x5B, 0x90}};
};

struct IClosable : IInspectable {
  static constexpr IID kIid{0x30D5A829, 0x7FA4, 0x4026, {0x83, 0xBB, 0xD7, 0x5B, 0xAE, 0x4E, 0xA9, 0x9E}};
  virtual HRESULT STDMETHODCALLTYPE Close() = 0;
};

struct IDirect3DDevice : IInspectable {
  static constexpr IID kIid{0xA37624AB, 0x8D5F, 0x4650, {0x9D, 0x3E, 0x9E, 0xAE, 0x3D, 0x9B, 0xC6, 0x70}};
  virtual HRESULT STDMETHODCALLTYPE Trim() = 0;
};

struct IDirect3DSurface : IInspectable {
  static constexpr IID kIid{0x0BF4A146, 0x13C1, 0x4694, {0xBE, 0xE3, 0x7A, 0xBF, 0x15, 0xEA, 0xF5, 0x86}};
  virtual HRESULT STDMETHODCALLTYPE get_Description(Direct3DSurfaceDescription* description) = 0;
};

/// Leads from a WinRT device or surface to the DXGI or Direct3D object it wraps.
struct IDirect3DDxgiInterfaceAccess : IUnknown {
  static constexpr IID kIid{0xA9B3D012, 0x3DF2, 0x4EE3, {0xB8, 0xD1, 0x86, 0x95, 0xF4, 0x57, 0xD3, 0xC1}};
  virtual HRESULT STDMETHODCALLTYPE GetInterface(REFIID iid, void** object) = 0;
};

struct IGraphicsCaptureItemInterop : IUnknown {
  static constexpr IID kIid{0x3628E81B, 0x3CAC, 0x4C60, {0xB7, 0xF4, 0x23, 0xCE, 0x0E, 0x0C, 0x33, 0x56}};
  virtual HRESULT STDMETHODCALLTYPE CreateForWindow(HWND window, REFIID iid, void** item) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateForMonitor(HMONITOR monitor, REFIID iid, void** item) = 0;
};

/// Handler of an item's `Closed` event; declared for its slot only, nobody here subscribes to it.
struct IClosedHandler;

struct IGraphicsCaptureItem : IInspectable {
  static constexpr IID kIid{0x79C3F95B, 0x31F7, 0x4EC2, {0xA4, 0x64, 0x63, 0x2E, 0xF5, 0xD3, 0x07, 0x60}};
  virtual HRESULT STDMETHODCALLTYPE get_DisplayName(HSTRING* name) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Size(SizeInt32* size) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_Closed(IClosedHandler* handler, EventRegistrationToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_Closed(EventRegistrationToken token) = 0;
};

struct IDirect3D11CaptureFramePoolStatics : IInspectable {
  static constexpr IID kIid{0x7784056A, 0x67AA, 0x4D53, {0xAE, 0x54, 0x10, 0x88, 0xD5, 0xA8, 0xCA, 0x21}};
  virtual HRESULT STDMETHODCALLTYPE Create(IDirect3DDevice* device, DirectXPixelFormat format, INT32 buffers,
                                           SizeInt32 size, IDirect3D11CaptureFramePool** pool) = 0;
};

struct IDirect3D11CaptureFramePoolStatics2 : IInspectable {
  static constexpr IID kIid{0x589B103F, 0x6BBC, 0x5DF5, {0xA9, 0x91, 0x02, 0xE2, 0x8B, 0x3B, 0x66, 0xD5}};
  virtual HRESULT STDMETHODCALLTYPE CreateFreeThreaded(IDirect3DDevice* device, DirectXPixelFormat format,
                                                       INT32 buffers, SizeInt32 size,
                                                       IDirect3D11CaptureFramePool** pool) = 0;
};

/// The `FrameArrived` handler. A free-threaded pool calls it from threads of its own, so it must answer
/// IAgileObject.
struct IFrameArrivedHandler : IUnknown {
  static constexpr IID kIid{0x51A947F7, 0x79CF, 0x5A3E, {0xA3, 0xA5, 0x12, 0x89, 0xCF, 0xA6, 0xDF, 0xE8}};
  virtual HRESULT STDMETHODCALLTYPE Invoke(IDirect3D11CaptureFramePool* sender, IInspectable* args) = 0;
};

struct IDirect3D11CaptureFramePool : IInspectable {
  static constexpr IID kIid{0x24EB6D22, 0x1975, 0x422E, {0x82, 0xE7, 0x78, 0x0D, 0xBD, 0x8D, 0xDF, 0x24}};
  virtual HRESULT STDMETHODCALLTYPE Recreate(IDirect3DDevice* device, DirectXPixelFormat format,
                                             INT32 buffers, SizeInt32 size) = 0;
  virtual HRESULT STDMETHODCALLTYPE TryGetNextFrame(IDirect3D11CaptureFrame** frame) = 0;
  virtual HRESULT STDMETHODCALLTYPE add_FrameArrived(IFrameArrivedHandler* handler,
                                                     EventRegistrationToken* token) = 0;
  virtual HRESULT STDMETHODCALLTYPE remove_FrameArrived(EventRegistrationToken token) = 0;
  virtual HRESULT STDMETHODCALLTYPE CreateCaptureSession(IGraphicsCaptureItem* item,
                                                         IGraphicsCaptureSession** session) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_DispatcherQueue(IUnknown** queue) = 0;
};

struct IDirect3D11CaptureFrame : IInspectable {
  static constexpr IID kIid{0xFA50C623, 0x38DA, 0x4B32, {0xAC, 0xF3, 0xFA, 0x97, 0x34, 0xAD, 0x80, 0x0E}};
  virtual HRESULT STDMETHODCALLTYPE get_Surface(IDirect3DSurface** surface) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_SystemRelativeTime(TimeSpan* time) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_ContentSize(SizeInt32* size) = 0;
};

struct IGraphicsCaptureSession : IInspectable {
  static constexpr IID kIid{0x814E42A9, 0xF70F, 0x4AD7, {0x93, 0x9B, 0xFD, 0xDC, 0xC6, 0xEB, 0x88, 0x0D}};
  virtual HRESULT STDMETHODCALLTYPE StartCapture() = 0;
};

/// The session's from Windows 10 version 2004 on.
struct IGraphicsCaptureSession2 : IInspectable {
  static constexpr IID kIid{0x2C39AE40, 0x7D2E, 0x5044, {0x80, 0x4E, 0x8B, 0x67, 0x99, 0xD4, 0xCF, 0x9E}};
  virtual HRESULT STDMETHODCALLTYPE get_IsCursorCaptureEnabled(boolean* enabled) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_IsCursorCaptureEnabled(boolean enabled) = 0;
};

/// The session's from Windows 11 on.
struct IGraphicsCaptureSession3 : IInspectable {
  static constexpr IID kIid{0xF2CDD966, 0x22AE, 0x5EA1, {0x95, 0x96, 0x3A, 0x28, 0x93, 0x44, 0xC3, 0xBE}};
  virtual HRESULT STDMETHODCALLTYPE get_IsBorderRequired(boolean* required) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_IsBorderRequired(boolean required) = 0;
};

// NOLINTEND(readability-identifier-naming, modernize-avoid-c-arrays)

}  // namespace brisolte::abi
