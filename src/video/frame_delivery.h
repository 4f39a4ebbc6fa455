#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>

#include "common/gate.h"
#include "encoder/encoder.h"
#include "video/capture_platform.h"
#include "video/frame_pacer.h"

namespace brisolte {

/// The way of the frames of one recording from the capture service to the encoder.
///
/// Who may call when:
/// - The controller's thread calls `Start` and `Stop`, while its capture lives.
/// - Threads of the service call `OnFrameArrived` from the subscription on, several of them at once, and also
///   late: they may call, or be inside, when the capture has gone.
///
/// Therefore capture and service share this object, and the encoder, which is the recording's, is behind a
/// gate that `Stop` closes. Frames have their turn one after the other. A turn may take for ever, because the
/// service's calls may not come back: the controller waits for it only so long. The encoder behind the gate
/// always comes back.
class FrameDelivery {
 public:
  FrameDelivery(Encoder& encoder, std::int32_t frameRate,
                std::chrono::milliseconds patience = kServicePatience)
      : patience_(patience), pacer_(frameRate), encoder_(encoder) {}
  FrameDelivery(const FrameDelivery&) = delete;
  FrameDelivery& operator=(const FrameDelivery&) = delete;
  ~FrameDelivery() = default;

  /// From now on frames are taken; until then and after the end arrivals are counted, no more.
  void Start();
  /// Ends it for good. A frame that is having its turn is finished first; false, once, when its turn does not
  /// end in time. Either way the encoder is called no more when it returns.
  bool Stop();

  /// Takes the source's next frame and hands it on if it is due. Gives an HRESULT; a failure has an ERROR
  /// line.
  std::int32_t OnFrameArrived(FrameSource& source);

  /// Frames that arrived since the start.
  std::uint64_t triggerCount() const { return triggerCount_.load(std::memory_order_relaxed); }
  /// Frames that were handed to the encoder.
  std::uint32_t framesProcessed() const { return framesProcessed_.load(std::memory_order_relaxed); }

 private:
  void TakeFrame(FrameSource& source);
  void TellFailure(const std::string& failure) const;
  void Deliver(CapturedFrame& captured, const FrameTiming& timing, std::int64_t capturedMs);

  const std::chrono::milliseconds patience_;
  std::atomic<bool> taking_{false};
  std::atomic<bool> leftBehind_{false};
  std::atomic<std::uint64_t> triggerCount_{0};
  std::atomic<std::uint32_t> framesProcessed_{0};
  std::timed_mutex turn_;
  FramePacer pacer_;  // of the thread whose turn it is
  Gate<Encoder> encoder_;
};

}  // namespace brisolte
