#include "capture/frame_buffers.h"

#include <d3d10.h>

#include "shared/own_work.h"

namespace brisolte::standins {

namespace {

HRESULT MakeTexture(ID3D11Device& device, abi::SizeInt32 size, ComPtr<ID3D11Texture2D>& texture) {
  const D3D11_TEXTURE2D_DESC desc{static_cast<UINT>(size.Width),
                                  static_cast<UINT>(size.Height),
                                  1,
                                  1,
                                  DXGI_FORMAT_B8G8R8A8_UNORM,
                                  {1, 0},
                                  D3D11_USAGE_DEFAULT,
                                  D3D11_BIND_RENDER_TARGET | D3D11_BIND_SHADER_RESOURCE,
                                  0,
                                  0};
  return device.CreateTexture2D(&desc, nullptr, texture.GetAddressOf());
}

// The real service fills its buffers through a device of its own and shares them. Wine cannot share a texture
// between two devices, so the service uses the caller's device, under the lock that Direct3D has for such
// use.
void ProtectContext(ID3D11Device& device) {
  ComPtr<ID3D10Multithread> lock;
  if (SUCCEEDED(device.QueryInterface(__uuidof(ID3D10Multithread),
                                      reinterpret_cast<void**>(lock.GetAddressOf())))) {
    lock->SetMultithreadProtected(TRUE);
  }
}

}  // namespace

BufferLease::~BufferLease() {
  if (const auto owner = owner_.lock()) {
    owner->GiveBack(generation_, std::move(texture_));
  }
}

HRESULT FrameBuffers::Recreate(const ComPtr<ID3D11Device>& device, INT32 count, abi::SizeInt32 size) {
  const OwnWork ownWork;
  ProtectContext(*device.Get());
  std::vector<ComPtr<ID3D11Texture2D>> made(static_cast<std::size_t>(count));
  for (auto& texture : made) {
    if (const HRESULT result = MakeTexture(*device.Get(), size, texture); FAILED(result)) {
      return result;
    }
  }
  // Declared before the lock, so that the dropped frames go when it is open again: they ask for it.
  std::deque<CapturedFrame> dropped;
  const std::lock_guard lock(mutex_);
  if (closed_) {
    return kClosed;
  }
  ++generation_;
  free_.swap(made);
  waiting_.swap(dropped);
  freed_.notify_all();
  return S_OK;
}

void FrameBuffers::Close() {
  std::deque<CapturedFrame> dropped;
  std::vector<ComPtr<ID3D11Texture2D>> freed;
  const std::lock_guard lock(mutex_);
  closed_ = true;
  waiting_.swap(dropped);
  free_.swap(freed);
  freed_.notify_all();
}

bool FrameBuffers::closed() const {
  const std::lock_guard lock(mutex_);
  return closed_;
}

std::unique_ptr<BufferLease> FrameBuffers::TakeFree(std::chrono::milliseconds patience) {
  std::unique_lock lock(mutex_);
  if (!freed_.wait_for(lock, patience, [this] { return closed_ || !free_.empty(); }) || closed_) {
    return nullptr;
  }
  auto texture = std::move(free_.back());
  free_.pop_back();
  return std::make_unique<BufferLease>(weak_from_this(), generation_, std::move(texture));
}

bool FrameBuffers::Queue(CapturedFrame frame) {
  const std::lock_guard lock(mutex_);
  if (closed_ || frame.lease->generation() != generation_) {
    return false;
  }
  waiting_.push_back(std::move(frame));
  return true;
}

std::optional<CapturedFrame> FrameBuffers::TakeFrame() {
  const std::lock_guard lock(mutex_);
  if (waiting_.empty()) {
    return std::nullopt;
  }
  CapturedFrame frame = std::move(waiting_.front());
  waiting_.pop_front();
  return frame;
}

void FrameBuffers::GiveBack(std::uint64_t generation, ComPtr<ID3D11Texture2D> texture) {
  const std::lock_guard lock(mutex_);
  if (!closed_ && generation == generation_) {
    free_.push_back(std::move(texture));
    freed_.notify_all();
  }
}

}  // namespace brisolte::standins
