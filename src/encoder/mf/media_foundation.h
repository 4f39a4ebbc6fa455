#pragma once

#include <d3d11.h>
#include <mfidl.h>
#include <mfreadwrite.h>

#include <memory>
#include <span>
#include <vector>

#include "encoder/mf/aac_type.h"

namespace brisolte {

/// The functions of Media Foundation and Direct3D that begin everything the engine does there; what they make
/// is used directly. Arguments of the real functions that are not given here are the same for every call.
/// Results are HRESULTs. Any thread, between `Startup` and `Shutdown`.
class MediaFoundation {
 public:
  MediaFoundation() = default;
  MediaFoundation(const MediaFoundation&) = delete;
  MediaFoundation& operator=(const MediaFoundation&) = delete;
  virtual ~MediaFoundation() = default;

  /// Fails, too, where Windows has no Media Foundation. Each success is balanced by one `Shutdown`.
  virtual HRESULT Startup() = 0;
  virtual HRESULT Shutdown() = 0;

  virtual HRESULT CreateAttributes(IMFAttributes** attributes, UINT32 size) = 0;
  virtual HRESULT CreateMediaType(IMFMediaType** type) = 0;
  /// `url` is a path; the attributes say which container it gets.
  virtual HRESULT CreateSinkWriterFromURL(const wchar_t* url, IMFAttributes* attributes,
                                          IMFSinkWriter** writer) = 0;
  virtual HRESULT CreateSample(IMFSample** sample) = 0;
  virtual HRESULT CreateMemoryBuffer(DWORD size, IMFMediaBuffer** buffer) = 0;
  /// A buffer over the texture's only picture, which begins with its top row.
  virtual HRESULT CreateDXGISurfaceBuffer(ID3D11Texture2D* texture, IMFMediaBuffer** buffer) = 0;
  virtual HRESULT CreateDXGIDeviceManager(UINT* resetToken, IMFDXGIDeviceManager** manager) = 0;

  /// Adds the kinds of AAC that the system's encoders give out.
  virtual HRESULT ListAacTypes(std::vector<AacType>& types) = 0;

  /// A device of the default adapter's hardware.
  virtual HRESULT D3D11CreateDevice(UINT flags, std::span<const D3D_FEATURE_LEVEL> featureLevels,
                                    ID3D11Device** device) = 0;
};

/// The one of the system.
std::unique_ptr<MediaFoundation> SystemMediaFoundation();

}  // namespace brisolte
