#include "capture/saved_frame.h"

#include "capture/image_area.h"
#include "capture/png_file.h"
#include "common/given_object.h"
#include "common/hresult_failure.h"
#include "common/logger.h"
#include "video/mapped_texture.h"
#include "video/query_interface.h"

namespace brisolte {
namespace {

using Microsoft::WRL::ComPtr;

HRESULT FindTexture(abi::IDirect3DSurface& surface, ComPtr<ID3D11Texture2D>& texture) {
  ComPtr<abi::IDirect3DDxgiInterfaceAccess> access;
  const HRESULT found = Given(QueryByIid(&surface, access), access);
  return FAILED(found) ? found : GetBehind(*access.Get(), texture);
}

/// Copies the texture to where the processor can read it.
bool MapCopy(const Direct3D& direct3d, ID3D11Texture2D* texture, D3D11_TEXTURE2D_DESC description,
             MappedTexture& mapping) {
  description.Usage = D3D11_USAGE_STAGING;
  description.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
  // What a staging texture may not have.
  description.BindFlags = 0;
  description.MiscFlags = 0;
  ComPtr<ID3D11Texture2D> staging;
  if (!CheckResult(
          Given(direct3d.device->CreateTexture2D(&description, nullptr, staging.GetAddressOf()), staging),
          "Failed to create staging texture: ")) {
    return false;
  }
  direct3d.context->CopyResource(staging.Get(), texture);
  return CheckResult(mapping.Map(direct3d.context.Get(), staging.Get()), "Failed to map staging texture: ");
}

/// False, with an ERROR line, when the rectangle leaves nothing of the image or begins beyond it.
bool ChooseArea(const ImagePixels& image, const Rectangle& crop, ImageArea& area) {
  area = CropArea(image.width, image.height, crop);
  Logger::Info("Crop region: (" + std::to_string(area.x) + ", " + std::to_string(area.y) + ", " +
               std::to_string(area.width) + ", " + std::to_string(area.height) + ")");
  if (!LiesWithin(area, image.width, image.height)) {
    Logger::Error("Invalid crop region or completely outside the image");
    return false;
  }
  return true;
}

bool SaveImage(const ImagePixels& image, const std::string& filePath, const std::optional<Rectangle>& crop) {
  if (!crop) {
    return WritePng(image, std::nullopt, filePath);
  }
  ImageArea area;
  return ChooseArea(image, *crop, area) && WritePng(image, area, filePath);
}

}  // namespace

bool SaveFrameToFile(const Direct3D& direct3d, const FramePicture& picture, const std::string& filePath,
                     const std::optional<Rectangle>& crop) {
  Logger::Info("Saving frame to file: " + filePath);
  ComPtr<ID3D11Texture2D> texture;
  if (!CheckResult(FindTexture(*picture.surface.Get(), texture), "Failed to get frame texture: ")) {
    return false;
  }
  D3D11_TEXTURE2D_DESC description{};
  texture->GetDesc(&description);
  Logger::Info("Texture size: " + std::to_string(description.Width) + "x" +
               std::to_string(description.Height));
  MappedTexture mapping;
  if (!MapCopy(direct3d, texture.Get(), description, mapping)) {
    return false;
  }
  const PixelSize size{static_cast<std::int32_t>(description.Width),
                       static_cast<std::int32_t>(description.Height)};
  const PixelSize drawn = DrawnSize(size, picture.content, picture.visible);
  const ImagePixels image{static_cast<const std::uint8_t*>(mapping.pixels().pData), mapping.pixels().RowPitch,
                          static_cast<std::uint32_t>(drawn.width), static_cast<std::uint32_t>(drawn.height)};
  if (!SaveImage(image, filePath, crop)) {
    return false;
  }
  Logger::Info("Successfully saved frame to file: " + filePath);
  return true;
}

}  // namespace brisolte
