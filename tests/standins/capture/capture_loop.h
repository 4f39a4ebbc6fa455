#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

#include "capture/canvas.h"
#include "capture/capture_item.h"
#include "capture/frame_buffers.h"
#include "capture/frame_pool.h"
#include "capture/session_marks.h"

namespace brisolte::standins {

/// What a started session does, on two threads of the service: one takes pictures, the other tells of them,
/// so that a slow handler does not keep the next picture from being taken while a buffer is free.
class CaptureLoop : public std::enable_shared_from_this<CaptureLoop> {
 public:
  CaptureLoop(ComPtr<IOwnItem> item, std::shared_ptr<FrameBuffers> buffers,
              std::shared_ptr<FramePool::Anchor> pool);

  SessionMarks& marks() { return marks_; }

  /// False when the threads cannot be had.
  bool Start();
  /// Ends the delivery without waiting for a picture or a handler that is under way.
  void Stop();

 private:
  using Clock = std::chrono::steady_clock;

  void TakePictures();
  void TellOfPictures();
  bool TakePicture();
  abi::SizeInt32 SizeWithBorders(abi::SizeInt32 content) const;
  bool Deliver(CapturedFrame frame);
  bool PrepareCanvases(const BufferLease& lease);
  void WaitForTick(int ticks);
  bool stopped();

  const ComPtr<IOwnItem> item_;
  const std::shared_ptr<FrameBuffers> buffers_;
  const std::shared_ptr<FramePool::Anchor> pool_;
  const Clock::time_point firstTick_;
  SessionMarks marks_;

  std::mutex mutex_;
  std::condition_variable changed_;
  bool stopped_ = false;
  int untold_ = 0;

  // Of the thread that takes pictures.
  std::unique_ptr<Canvas> current_;
  std::unique_ptr<Canvas> delivered_;
  abi::SizeInt32 told_{0, 0};  // as the content of the last one delivered
  bool anyDelivered_ = false;
  std::uint64_t generation_ = 0;
};

}  // namespace brisolte::standins
