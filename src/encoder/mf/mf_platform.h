#pragma once

// What everything else of the engine is made with: the functions of Media Foundation, what starts and ends it
// for a thread, the device that encoders work on, and the sink writer with its file.

#include <d3d11.h>
#include <mfidl.h>
#include <mfreadwrite.h>
#include <wrl/client.h>

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "common/com_apartment.h"
#include "encoder/mf/aac_type.h"

namespace brisolte {

/// The functions of Media Foundation and Direct3D that begin everything the engine does there; what they make
/// is used directly. Arguments of the real functions that are not given here are the same for every call.
/// Results are HRESULTs. Any thread, between `Startup` and `Shutdown`.
class MFPlatform {
 public:
  MFPlatform() = default;
  MFPlatform(const MFPlatform&) = delete;
  MFPlatform& operator=(const MFPlatform&) = delete;
  virtual ~MFPlatform() = default;

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
std::unique_ptr<MFPlatform> SystemMFPlatform();

/// COM, single-threaded, and Media Foundation started for the thread that makes it, until it is destroyed on
/// that same thread; everything made with them is released before. What did not start has an ERROR line, and
/// what comes after it is not tried.
class MFSession {
 public:
  /// Borrows `platform`.
  explicit MFSession(MFPlatform& platform);
  MFSession(const MFSession&) = delete;
  MFSession& operator=(const MFSession&) = delete;
  ~MFSession();

  bool started() const { return started_; }

 private:
  MFPlatform& platform_;
  const ComApartment apartment_;
  const bool started_;
};

/// The device that the sink writer's encoder works on, and the manager that shares it with the encoder.
class DeviceManager {
 public:
  /// Makes a device of its own and the manager, and gives the one to the other. False with an ERROR line.
  bool Create(MFPlatform& platform);

  /// Gives the manager another device, because a texture can only be encoded on the device it belongs to.
  /// The device is made safe for several threads first: the encoder's use it besides its owner's. False with
  /// an ERROR line; the device before is then the one still.
  bool ResetDevice(ID3D11Device& device);

  void Release();

  /// Null before `Create`.
  ID3D11Device* device() const { return device_.Get(); }
  IMFDXGIDeviceManager* manager() const { return manager_.Get(); }

 private:
  Microsoft::WRL::ComPtr<ID3D11Device> device_;
  Microsoft::WRL::ComPtr<IMFDXGIDeviceManager> manager_;
  UINT resetToken_ = 0;
};

/// The sink writer for the MP4 file at `path` (UTF-8), whatever its name ends in and however long it is. Null
/// when a call fails, with an ERROR line.
Microsoft::WRL::ComPtr<IMFSinkWriter> MakeSinkWriter(MFPlatform& platform, const std::string& path);

/// What holds a sink writer's file. Null before writing has begun.
Microsoft::WRL::ComPtr<IMFMediaSink> MediaSinkOf(IMFSinkWriter& writer);

/// Closes a file that was not finalized, as it is: letting go of the sink writer alone need not end its media
/// sink. A write that is under way on another thread returns with a failure.
void CloseFile(IMFMediaSink& sink);

}  // namespace brisolte
