#include "capture/png_file.h"

#include <wincodec.h>
#include <windows.h>
#include <wrl/client.h>

#include "capture/replaced_file.h"
#include "common/given_object.h"
#include "common/hresult_failure.h"
#include "common/mta_usage.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

HRESULT CreateFactory(MtaUsage& apartment, ComPtr<IWICImagingFactory>& factory) {
  const HRESULT held = apartment.Hold();
  return FAILED(held) ? held
                      : Given(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                               __uuidof(IWICImagingFactory),
                                               reinterpret_cast<void**>(factory.GetAddressOf())),
                              factory);
}

bool CreateWholeBitmap(IWICImagingFactory& factory, const ImagePixels& image, ComPtr<IWICBitmap>& bitmap) {
  // The parameter is not const, but the bitmap copies what it points to.
  auto* bytes = const_cast<BYTE*>(image.bytes);
  return CheckResult(Given(factory.CreateBitmapFromMemory(
                               image.width, image.height, GUID_WICPixelFormat32bppBGRA, image.pitch,
                               image.pitch * image.height, bytes, bitmap.GetAddressOf()),
                           bitmap),
                     "Failed to create bitmap from memory: ");
}

HRESULT FindLockedBytes(IWICBitmapLock& lock, BYTE*& bytes, UINT& pitch) {
  UINT size = 0;
  const HRESULT found = Given(lock.GetDataPointer(&size, &bytes), bytes);
  return FAILED(found) ? found : lock.GetStride(&pitch);
}

bool CreateAreaBitmap(IWICImagingFactory& factory, const ImagePixels& image, const ImageArea& area,
                      ComPtr<IWICBitmap>& bitmap) {
  const WICRect whole{0, 0, static_cast<INT>(area.width), static_cast<INT>(area.height)};
  ComPtr<IWICBitmapLock> lock;
  BYTE* bytes = nullptr;
  UINT pitch = 0;
  const bool locked =
      CheckResult(Given(factory.CreateBitmap(area.width, area.height, GUID_WICPixelFormat32bppBGRA,
                                             WICBitmapCacheOnLoad, bitmap.GetAddressOf()),
                        bitmap),
                  "Failed to create crop bitmap: ") &&
      CheckResult(Given(bitmap->Lock(&whole, WICBitmapLockWrite, lock.GetAddressOf()), lock),
                  "Failed to lock bitmap: ") &&
      CheckResult(FindLockedBytes(*lock.Get(), bytes, pitch), "Failed to get bitmap data pointer: ");
  if (locked) {
    CopyArea(image, area, bytes, pitch);
  }
  return locked;
}

bool OpenStream(IWICImagingFactory& factory, ReplacedFile& file, const std::string& filePath,
                ComPtr<IWICStream>& stream) {
  constexpr auto kOpening = "Failed to initialize stream from filename: ";
  return CheckResult(Given(factory.CreateStream(stream.GetAddressOf()), stream),
                     "Failed to create stream: ") &&
         CheckResult(file.Reserve(filePath), kOpening) &&
         CheckResult(stream->InitializeFromFilename(file.temporaryPath().c_str(), GENERIC_WRITE), kOpening);
}

bool WriteFrame(IWICBitmapEncoder& encoder, IWICBitmap* bitmap, const ImageArea& area) {
  ComPtr<IWICBitmapFrameEncode> frame;
  WICPixelFormatGUID format = GUID_WICPixelFormat32bppBGRA;
  return CheckResult(Given(encoder.CreateNewFrame(frame.GetAddressOf(), nullptr), frame),
                     "Failed to create frame: ") &&
         CheckResult(frame->Initialize(nullptr), "Failed to initialize frame: ") &&
         CheckResult(frame->SetSize(area.width, area.height), "Failed to set frame size: ") &&
         CheckResult(frame->SetPixelFormat(&format), "Failed to set pixel format: ") &&
         CheckResult(frame->WriteSource(bitmap, nullptr), "Failed to write source: ") &&
         CheckResult(frame->Commit(), "Failed to commit frame: ");
}

/// Writes the temporary file and lets go of it.
bool Encode(IWICImagingFactory& factory, IWICBitmap* bitmap, const ImageArea& area, ReplacedFile& file,
            const std::string& filePath) {
  ComPtr<IWICStream> stream;
  ComPtr<IWICBitmapEncoder> encoder;
  return CheckResult(
             Given(factory.CreateEncoder(GUID_ContainerFormatPng, nullptr, encoder.GetAddressOf()), encoder),
             "Failed to create PNG encoder: ") &&
         OpenStream(factory, file, filePath, stream) &&
         CheckResult(encoder->Initialize(stream.Get(), WICBitmapEncoderNoCache),
                     "Failed to initialize encoder: ") &&
         WriteFrame(*encoder.Get(), bitmap, area) &&
         CheckResult(encoder->Commit(), "Failed to commit encoder: ");
}

}  // namespace

bool WritePng(const ImagePixels& image, const std::optional<ImageArea>& area, const std::string& filePath) {
  MtaUsage apartment;  // first, so that it outlives the objects
  ComPtr<IWICImagingFactory> factory;
  ComPtr<IWICBitmap> bitmap;
  ReplacedFile file;
  return CheckResult(CreateFactory(apartment, factory), "Failed to create WIC factory: ") &&
         (area ? CreateAreaBitmap(*factory.Get(), image, *area, bitmap)
               : CreateWholeBitmap(*factory.Get(), image, bitmap)) &&
         Encode(*factory.Get(), bitmap.Get(), area.value_or(ImageArea{0, 0, image.width, image.height}), file,
                filePath) &&
         CheckResult(file.Commit(), "Failed to replace file: ");
}

}  // namespace brisolte
