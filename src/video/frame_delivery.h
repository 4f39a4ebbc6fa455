#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "common/gate.h"
#include "common/pausable_clock.h"
#include "encoder/encoder.h"
#include "video/capture_platform.h"
#include "video/frame_pacer.h"

namespace brisolte {

/// The way of the frames of one recording from the capture service to the encoder.
///
/// Who may call when:
/// - The controller's thread calls `Start`, `Pause`, `Resume` and `Stop`, while its capture lives.
/// - The capture thread calls `DeliverKept`, perhaps also late.
/// - Threads of the service call `OnFrameArrived` from the subscription on, several of them at once, and also
///   late: they may call, or be inside, when the capture has gone.
///
/// Therefore capture and service share this object, and the encoder, which is the recording's, is behind a
/// gate that `Stop` closes. Frames have their turn one after the other. A turn may take for ever, because the
/// service's calls may not come back: the controller waits for it only so long. The encoder behind the gate
/// always comes back.
class FrameDelivery {
 public:
  /// Frames are told by `clock`, which is behind by what was paused.
  FrameDelivery(Encoder& encoder, std::int32_t frameRate, std::shared_ptr<const PausableClock> clock,
                std::chrono::milliseconds patience = kServicePatience)
      : patience_(patience), clock_(std::move(clock)), pacer_(frameRate), encoder_(encoder) {}
  FrameDelivery(const FrameDelivery&) = delete;
  FrameDelivery& operator=(const FrameDelivery&) = delete;
  ~FrameDelivery() = default;

  /// From now on frames are taken; until then and after the end arrivals are counted, no more.
  void Start();

  /// From when it returns the encoder is called no more, unless a frame's turn does not end in time. Of the
  /// frames that arrive the last one is kept: no other comes until what it shows changes again.
  void Pause();
  /// Frames are handed on again. Once the clock goes on.
  void Resume() { paused_.store(false); }
  bool paused() const { return paused_.load(); }
  /// Hands on the frame that was kept, unless a later one was; after the end it is given back.
  void DeliverKept();

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
  struct KeptFrame {
    std::unique_ptr<CapturedFrame> frame;
    std::int64_t capturedMs = 0;
    std::chrono::steady_clock::time_point arrival;
  };

  template <typename Work>
  std::int32_t InTurn(Work work);
  void TakeFrame(FrameSource& source);
  std::int64_t Recorded(std::int64_t capturedMs) const;
  void TellFailure(const std::string& failure) const;
  /// Of an arrival that is accepted.
  void Deliver(CapturedFrame& captured, const Arrival& arrival, std::int64_t capturedMs);

  const std::chrono::milliseconds patience_;
  const std::shared_ptr<const PausableClock> clock_;
  std::atomic<bool> taking_{false};
  std::atomic<bool> paused_{false};
  std::atomic<bool> leftBehind_{false};
  std::atomic<std::uint64_t> triggerCount_{0};
  std::atomic<std::uint32_t> framesProcessed_{0};
  std::timed_mutex turn_;
  // Of the thread whose turn it is.
  FramePacer pacer_;
  KeptFrame kept_;
  Gate<Encoder> encoder_;
};

}  // namespace brisolte
