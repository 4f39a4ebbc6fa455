#include "video/frame_delivery.h"

#include <exception>
#include <string>
#include <utility>

#include "common/hresult_error.h"
#include "common/logger.h"

namespace brisolte {
namespace {

constexpr std::int64_t kTicksPerMillisecond = 10'000;
constexpr auto kUnspecifiedFailure = static_cast<std::int32_t>(0x80004005);

/// The milliseconds since a frame's capture. Its time and the steady clock both come from the system's
/// performance counter, by what the platform documents of the one and its C++ libraries do for the other; an
/// answer that no frame's delivery takes says that they do not, and counts as unknown.
std::int64_t DelaySince(std::int64_t capturedMs) {
  constexpr std::int64_t kLongestDelay = 10'000;
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  const std::int64_t delay = std::chrono::duration_cast<std::chrono::milliseconds>(now).count() - capturedMs;
  return delay >= 0 && delay <= kLongestDelay ? delay : 0;
}

}  // namespace

void FrameDelivery::Start() {
  triggerCount_.store(0, std::memory_order_relaxed);
  taking_.store(true);
}

void FrameDelivery::Pause() {
  paused_.store(true);
  const std::unique_lock turn(turn_, patience_);
}

bool FrameDelivery::Stop() {
  if (!taking_.exchange(false)) {
    return true;
  }
  const std::unique_lock turn(turn_, patience_);
  leftBehind_.store(!turn.owns_lock());
  encoder_.Close();
  return turn.owns_lock();
}

std::int32_t FrameDelivery::OnFrameArrived(FrameSource& source) {
  triggerCount_.fetch_add(1, std::memory_order_relaxed);
  // Before the turn too: an arrival after the end does not wait for one that does not come back.
  if (!taking_.load()) {
    return 0;
  }
  return InTurn([&] {
    if (taking_.load()) {
      TakeFrame(source);
    }
  });
}

template <typename Work>
std::int32_t FrameDelivery::InTurn(Work work) {
  try {
    const std::scoped_lock turn(turn_);
    work();
    return 0;
  } catch (const HResultError& error) {
    TellFailure(std::string("Exception in OnFrameArrived: ") + error.what());
    return error.hresult();
  } catch (const std::exception& error) {
    TellFailure(std::string("Exception in OnFrameArrived: ") + error.what());
  } catch (...) {
    TellFailure("Unknown exception in OnFrameArrived");
  }
  return kUnspecifiedFailure;
}

void FrameDelivery::TellFailure(const std::string& failure) const {
  // One of a frame that was left behind comes when its recording has long ended, and was told of then.
  if (!leftBehind_.load()) {
    Logger::Error(failure);
  }
}

std::int64_t FrameDelivery::Recorded(std::int64_t capturedMs) const {
  return capturedMs - std::chrono::duration_cast<std::chrono::milliseconds>(clock_->behind()).count();
}

void FrameDelivery::TakeFrame(FrameSource& source) {
  auto captured = source.TryGetNextFrame();
  if (captured == nullptr) {
    Logger::Warning("No frame available");
    return;
  }
  const std::int64_t nowMs = captured->SystemRelativeTime() / kTicksPerMillisecond;
  if (paused_.load()) {
    kept_ = {std::move(captured), nowMs, std::chrono::steady_clock::now()};
    return;
  }
  const Arrival arrival = pacer_.Arrive(Recorded(nowMs));
  if (arrival.accepted) {
    kept_ = {};
    Deliver(*captured, arrival, nowMs);
  }
}

void FrameDelivery::DeliverKept() {
  InTurn([this] {
    const KeptFrame kept = std::exchange(kept_, {});
    if (kept.frame == nullptr || !taking_.load()) {
      return;
    }
    // It shows what is there by now, and therefore counts as captured by now.
    const auto keptFor = std::chrono::steady_clock::now() - kept.arrival;
    const std::int64_t nowMs =
        kept.capturedMs + std::chrono::duration_cast<std::chrono::milliseconds>(keptFor).count();
    Deliver(*kept.frame, pacer_.ArriveDue(Recorded(nowMs)), nowMs);
  });
}

void FrameDelivery::Deliver(CapturedFrame& captured, const Arrival& arrival, std::int64_t capturedMs) {
  if (arrival.isFirst) {
    Logger::Info("First Video frame arrived at: " + std::to_string(capturedMs));
  }
  VideoFrame frame;
  const bool converted = captured.SurfaceFromFrame(frame, *arrival.accepted);
  captured.Close();
  if (!converted) {
    return;
  }
  frame.delay = DelaySince(capturedMs);
  framesProcessed_ += encoder_.Through([&](Encoder& encoder) {
    encoder.ProcessFrameAsync(frame);
    return 1U;
  });
}

}  // namespace brisolte
