#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "encoder/video_frame.h"
#include "video/capture_geometry.h"
#include "video/frame_pacer.h"
#include "video/pixel_format.h"

struct ID3D11Device;

namespace brisolte {

/// How a Direct3D device is made; numbers as the graphics system has them.
enum class DriverType : std::int32_t { kHardware = 1, kReference = 2, kWarp = 5 };

/// A frame taken out of the pool. Destroying it gives its buffer back and ends the mapping of its converted
/// pixels.
class CapturedFrame {
 public:
  CapturedFrame() = default;
  CapturedFrame(const CapturedFrame&) = delete;
  CapturedFrame& operator=(const CapturedFrame&) = delete;
  virtual ~CapturedFrame() = default;

  /// When the service composed it, in units of 100 nanoseconds. Raises HResultError.
  virtual std::int64_t SystemRelativeTime() = 0;

  /// Converts it for the encoder. False when it cannot, with an ERROR line and `frame` empty. What `frame`
  /// refers to is valid as long as this object lives, also after `Close`.
  virtual bool SurfaceFromFrame(VideoFrame& frame, const FrameTiming& timing) = 0;

  /// Gives its buffer back to the pool at once. Raises HResultError.
  virtual void Close() = 0;
};

/// Where arrived frames are taken from, only inside the handler that it is given to. Its frames may be used
/// there and in `CapturePlatform::Perform`.
class FrameSource {
 public:
  FrameSource() = default;
  FrameSource(const FrameSource&) = delete;
  FrameSource& operator=(const FrameSource&) = delete;
  virtual ~FrameSource() = default;

  /// Null when there is none. Raises HResultError.
  virtual std::unique_ptr<CapturedFrame> TryGetNextFrame() = 0;
};

/// How long the service is waited for: as long as the system lets a window not answer before it calls it
/// hung.
inline constexpr std::chrono::seconds kServicePatience{5};

/// The ERROR line for a call of the service that did not come back in that time.
inline std::string LeftBehindText(const std::string& call) {
  return "Capture service does not answer, left behind: " + call;
}

/// What the video capture needs of the system, step by step: one object serves one capture and holds what the
/// steps make. It gives everything back when destroyed, after any step. All operations are called on the
/// controller's thread.
///
/// Results are HRESULTs where the caller tells failures apart by them. "Raises" means HResultError. An
/// operation that the service does not come back from has failed, with an ERROR line that names it, and so
/// have all that follow.
class CapturePlatform {
 public:
  /// Called for every frame that arrives, on any thread, perhaps on several at once. Does not throw; returns
  /// an HRESULT.
  using FrameArrivedHandler = std::function<std::int32_t(FrameSource&)>;

  CapturePlatform() = default;
  CapturePlatform(const CapturePlatform&) = delete;
  CapturePlatform& operator=(const CapturePlatform&) = delete;
  virtual ~CapturePlatform() = default;

  /// Makes the Direct3D device and its immediate context. On success tells the feature level obtained.
  virtual std::int32_t CreateDevice(DriverType type, std::int32_t& featureLevel) = 0;
  virtual std::int32_t QueryVideoDevice() = 0;
  virtual std::int32_t QueryVideoContext() = 0;
  /// Borrowed; null before `CreateDevice`.
  virtual ID3D11Device* Device() = 0;

  /// Wraps the device for the capture service; false when no wrapper results. Raises std::runtime_error when
  /// the device has no DXGI side.
  virtual bool WrapDevice() = 0;
  virtual bool ObtainItemInterop() = 0;
  /// What tells the wrapped device from others, for the log.
  virtual std::string DeviceIdentifier() = 0;
  virtual bool HasWrappedDevice() = 0;

  virtual std::int32_t CreateItemForMonitor(std::int64_t monitor) = 0;
  virtual std::int32_t CreateItemForWindow(std::int64_t window) = 0;
  virtual bool HasItem() = 0;
  /// Raises.
  virtual PixelSize ItemSize() = 0;

  /// False when no pool results. Raises when the service has no pools to give.
  virtual bool CreateFramePool(PixelSize size, std::int32_t buffers) = 0;
  /// Raises. The handler is kept until this object is destroyed, or longer by a call that is under way, and
  /// with it what frames are converted by.
  virtual void SubscribeFrameArrived(FrameArrivedHandler handler) = 0;
  virtual std::int32_t CreateSession() = 0;
  virtual bool HasSession() = 0;

  virtual std::int32_t CreateVideoProcessorEnumerator(const CaptureGeometry& geometry,
                                                      std::int32_t frameRate) = 0;
  virtual std::int32_t CreateVideoProcessor() = 0;
  /// In place of the two, where there is no video processor.
  virtual void ConvertOnCpu(const CaptureGeometry& geometry) = 0;
  /// What frames are converted to; told once, before frames arrive.
  virtual void SetOutputFormat(DxgiFormat format) = 0;

  /// Does it, and waits for it, where frames may be used. False when the service does not come back; `name`
  /// is for the log. `work` owns all that it uses.
  virtual bool Perform(const char* name, const std::function<void()>& work) = 0;

  /// Asks the session to leave the pointer out of its pictures. Systems before Windows 10 version 2004
  /// cannot.
  virtual std::int32_t LeaveOutCursor() = 0;
  /// Asks the session to draw no border around what it captures. Systems before Windows 11 cannot, and others
  /// may refuse.
  virtual std::int32_t LeaveOutBorder() = 0;

  /// Raises.
  virtual void StartCapture() = 0;
  /// Ends delivery and releases the session. Raises, but not when the service does not come back: then there
  /// is an ERROR line, and delivery ends when it does.
  virtual void CloseSession() = 0;
  /// Releases the item and the wrapped device.
  virtual void ReleaseTarget() = 0;
};

}  // namespace brisolte
