#pragma once

#include <wincodec.h>
#include <windows.h>
#include <wrl/client.h>

#include <cstdint>
#include <string>
#include <vector>

#include "common/hresult_error.h"
#include "common/mta_usage.h"
#include "common/text.h"

namespace brisolte::testing {

/// The pixels of a PNG: blue, green, red and alpha of each, row by row.
struct DecodedPng {
  UINT width = 0;
  UINT height = 0;
  std::vector<std::uint8_t> bytes;

  /// The colour at a place as 0xAARRGGBB.
  std::uint32_t At(UINT x, UINT y) const {
    const std::uint8_t* pixel = bytes.data() + (std::size_t{y} * width + x) * 4;
    return std::uint32_t{pixel[3]} << 24 | std::uint32_t{pixel[2]} << 16 | std::uint32_t{pixel[1]} << 8 |
           pixel[0];
  }
};

/// Reads a PNG (its path UTF-8) with the system's decoder. Raises HResultError.
inline DecodedPng DecodePng(const std::string& path) {
  using Microsoft::WRL::ComPtr;
  MtaUsage apartment;
  ThrowIfFailed(apartment.Hold());
  ComPtr<IWICImagingFactory> factory;
  ComPtr<IWICBitmapDecoder> decoder;
  ComPtr<IWICBitmapFrameDecode> frame;
  ComPtr<IWICBitmapSource> source;
  ThrowIfFailed(CoCreateInstance(CLSID_WICImagingFactory, nullptr, CLSCTX_INPROC_SERVER,
                                 __uuidof(IWICImagingFactory),
                                 reinterpret_cast<void**>(factory.GetAddressOf())));
  ThrowIfFailed(factory->CreateDecoderFromFilename(ToWide(path).c_str(), nullptr, GENERIC_READ,
                                                   WICDecodeMetadataCacheOnLoad, decoder.GetAddressOf()));
  ThrowIfFailed(decoder->GetFrame(0, frame.GetAddressOf()));
  ThrowIfFailed(WICConvertBitmapSource(GUID_WICPixelFormat32bppBGRA, frame.Get(), source.GetAddressOf()));
  DecodedPng png;
  ThrowIfFailed(source->GetSize(&png.width, &png.height));
  png.bytes.resize(std::size_t{png.width} * png.height * 4);
  ThrowIfFailed(
      source->CopyPixels(nullptr, png.width * 4, static_cast<UINT>(png.bytes.size()), png.bytes.data()));
  return png;
}

}  // namespace brisolte::testing
