#pragma once

#include <d3d11.h>
#include <wrl/client.h>

#include <optional>

#include "encoder/video_frame.h"
#include "video/frame_canvas.h"
#include "video/frame_pacer.h"
#include "video/graphics_capture_abi.h"
#include "video/graphics_device.h"
#include "video/mapped_texture.h"
#include "video/nv12_converter.h"
#include "video/pixel_format.h"
#include "video/video_processor.h"

namespace brisolte {

/// Turns captured surfaces into frames in the encoder's layout, on the GPU and in system memory. Its textures
/// are made with the first frame, in the frame's size, and stay. For one thread at a time.
class FrameConverter {
 public:
  explicit FrameConverter(const Direct3D& graphics) : graphics_(graphics), processor_(graphics) {}

  HRESULT CreateVideoProcessorEnumerator(const CaptureGeometry& geometry, std::int32_t frameRate);
  HRESULT CreateVideoProcessor() { return processor_.CreateProcessor(); }
  /// Converts on the CPU from now on, in place of the video processor. Before `SetOutputFormat`.
  void UseCpu(const CaptureGeometry& geometry);
  void SetOutputFormat(DxgiFormat format);

  /// Fills `frame`, whose pixels `mapping` then holds. No mapping of an earlier frame may be left. False when
  /// it cannot, with an ERROR line.
  bool SurfaceFromFrame(abi::IDirect3D11CaptureFrame& captured, const FrameTiming& timing, VideoFrame& frame,
                        MappedTexture& mapping);

 private:
  bool Convert(abi::IDirect3D11CaptureFrame& captured, MappedTexture& mapping);
  bool CreateTextures();
  HRESULT CreateTexture(const D3D11_TEXTURE2D_DESC& description,
                        Microsoft::WRL::ComPtr<ID3D11Texture2D>& texture) const;
  HRESULT CreateSharedTexture();
  HRESULT CreateStagingTexture();
  HRESULT CreateCanvas(DXGI_FORMAT captured);
  bool Draw(ID3D11Texture2D* captured, PixelSize content);

  Direct3D graphics_;
  VideoProcessor processor_;
  CaptureGeometry geometry_;
  DXGI_FORMAT outputFormat_ = DXGI_FORMAT_UNKNOWN;  ///< of the textures
  bool usesCpu_ = false;
  std::optional<Nv12Converter> cpu_;  ///< of what the textures hold, when the encoder wants something else
  Microsoft::WRL::ComPtr<ID3D11Texture2D> shared_;
  Microsoft::WRL::ComPtr<ID3D11Texture2D> staging_;
  FrameCanvas canvas_;
};

}  // namespace brisolte
