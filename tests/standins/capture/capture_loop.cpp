#include "capture/capture_loop.h"

#include <d3d10.h>

#include <algorithm>
#include <utility>

#include "capture/service_thread.h"

namespace brisolte::standins {

namespace {

using namespace std::chrono_literals;

// Pictures are taken at the ticks of a 60 Hz display. A picture that takes longer costs whole ticks, so that
// a slow machine gives an even 30 or 20 a second and not a rhythm of its own.
constexpr std::chrono::nanoseconds kTick = 1'000'000'000ns / 60;
// How far the pauses grow while nothing changes, in ticks.
constexpr int kLongestPause = 4;
constexpr auto kPatience = 50ms;

// No two frames of this process have the same time.
std::int64_t NextFrameTime() {
  static std::mutex mutex;
  static std::int64_t last = 0;
  LARGE_INTEGER frequency{};
  LARGE_INTEGER now{};
  QueryPerformanceFrequency(&frequency);
  QueryPerformanceCounter(&now);
  const std::int64_t seconds = now.QuadPart / frequency.QuadPart;
  const std::int64_t rest = now.QuadPart % frequency.QuadPart;
  const std::lock_guard lock(mutex);
  last = std::max(last + 1, seconds * 10'000'000 + rest * 10'000'000 / frequency.QuadPart);
  return last;
}

void Upload(const Canvas& canvas, ID3D11Texture2D& texture) {
  ComPtr<ID3D11Device> device;
  ComPtr<ID3D11DeviceContext> context;
  ComPtr<ID3D10Multithread> lock;
  texture.GetDevice(device.GetAddressOf());
  device->GetImmediateContext(context.GetAddressOf());
  const bool lockable = SUCCEEDED(device.As(&lock));
  if (lockable) {
    lock->Enter();
  }
  context->UpdateSubresource(&texture, 0, nullptr, canvas.pixels(),
                             static_cast<UINT>(canvas.size().Width) * 4, 0);
  if (lockable) {
    lock->Leave();
  }
}

}  // namespace

CaptureLoop::CaptureLoop(ComPtr<IOwnItem> item, std::shared_ptr<FrameBuffers> buffers,
                         std::shared_ptr<FramePool::Anchor> pool)
    : item_(std::move(item)),
      buffers_(std::move(buffers)),
      pool_(std::move(pool)),
      firstTick_(Clock::now()) {}

bool CaptureLoop::Start() {
  marks_.Arm();
  const auto self = shared_from_this();
  if (StartServiceThread([self] { self->TakePictures(); }) &&
      StartServiceThread([self] { self->TellOfPictures(); })) {
    return true;
  }
  Stop();
  return false;
}

void CaptureLoop::Stop() {
  const std::lock_guard lock(mutex_);
  stopped_ = true;
  changed_.notify_all();
}

bool CaptureLoop::stopped() {
  const std::lock_guard lock(mutex_);
  return stopped_;
}

void CaptureLoop::TakePictures() {
  for (int pause = 1; !stopped() && !buffers_->closed();) {
    if (item_->target().Gone()) {
      item_->NoticeClosed();
      break;
    }
    pause = TakePicture() ? 1 : std::min(pause * 2, kLongestPause);
    WaitForTick(pause);
  }
  Stop();
  current_.reset();
  delivered_.reset();
}

bool CaptureLoop::TakePicture() {
  // The buffer first: a picture that were to wait for one would be old by then.
  auto lease = buffers_->TakeFree(kPatience);
  const auto rect = item_->target().Rect();
  if (!lease || !rect || !item_->target().Shown() || !PrepareCanvases(*lease)) {
    return false;
  }
  const auto content = SizeOf(*rect);
  const auto told = anyDelivered_ ? content : SizeWithBorders(content);
  const auto time = NextFrameTime();
  if (!current_->Draw(item_->target(), content)) {
    return false;
  }
  marks_.DrawOn(*current_);
  const bool differs =
      current_->FinishAndCompare(*delivered_) || told.Width != told_.Width || told.Height != told_.Height;
  if (!differs && anyDelivered_) {
    return false;
  }
  Upload(*current_, *lease->texture().Get());
  return Deliver({std::move(lease), told, time});
}

abi::SizeInt32 CaptureLoop::SizeWithBorders(abi::SizeInt32 content) const {
  const auto borders = item_->InvisibleBorders();
  return {content.Width + borders.Width, content.Height + borders.Height};
}

bool CaptureLoop::Deliver(CapturedFrame frame) {
  const auto told = frame.contentSize;
  if (stopped() || !buffers_->Queue(std::move(frame))) {
    return false;
  }
  std::swap(current_, delivered_);
  told_ = told;
  anyDelivered_ = true;
  const std::lock_guard lock(mutex_);
  ++untold_;
  changed_.notify_all();
  return true;
}

bool CaptureLoop::PrepareCanvases(const BufferLease& lease) {
  if (!current_ || lease.generation() != generation_) {
    D3D11_TEXTURE2D_DESC desc{};
    lease.texture()->GetDesc(&desc);
    const abi::SizeInt32 size{static_cast<INT32>(desc.Width), static_cast<INT32>(desc.Height)};
    generation_ = lease.generation();
    current_ = std::make_unique<Canvas>(size);
    delivered_ = std::make_unique<Canvas>(size);
    anyDelivered_ = false;
  }
  return current_->usable() && delivered_->usable();
}

void CaptureLoop::WaitForTick(int ticks) {
  const auto passed = (Clock::now() - firstTick_) / kTick;
  std::unique_lock lock(mutex_);
  changed_.wait_until(lock, firstTick_ + (passed + ticks) * kTick, [this] { return stopped_; });
}

void CaptureLoop::TellOfPictures() {
  std::unique_lock lock(mutex_);
  while (true) {
    changed_.wait(lock, [this] { return stopped_ || untold_ > 0; });
    if (stopped_) {
      return;
    }
    --untold_;
    lock.unlock();
    if (const auto pool = pool_->Lock()) {
      pool->RaiseFrameArrived();
    }
    lock.lock();
  }
}

}  // namespace brisolte::standins
