#pragma once

#include <d3d11.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "shared/com_object.h"

namespace brisolte::standins {

class FrameBuffers;

/// The use of one buffer; it is free again when this is destroyed.
class BufferLease {
 public:
  BufferLease(std::weak_ptr<FrameBuffers> owner, std::uint64_t generation, ComPtr<ID3D11Texture2D> texture)
      : owner_(std::move(owner)), generation_(generation), texture_(std::move(texture)) {}
  ~BufferLease();
  BufferLease(const BufferLease&) = delete;
  BufferLease& operator=(const BufferLease&) = delete;
  BufferLease(BufferLease&&) = delete;
  BufferLease& operator=(BufferLease&&) = delete;

  const ComPtr<ID3D11Texture2D>& texture() const { return texture_; }
  std::uint64_t generation() const { return generation_; }

 private:
  std::weak_ptr<FrameBuffers> owner_;
  std::uint64_t generation_;
  ComPtr<ID3D11Texture2D> texture_;
};

/// A captured picture on its way to the caller.
struct CapturedFrame {
  std::unique_ptr<BufferLease> lease;
  abi::SizeInt32 contentSize{};
  /// In units of 100 ns.
  std::int64_t time = 0;
};

/// The buffers of a frame pool and the frames that wait in them. Any thread.
class FrameBuffers : public std::enable_shared_from_this<FrameBuffers> {
 public:
  /// Replaces all buffers; frames that wait are dropped, those that the caller holds stay valid and count no
  /// more.
  HRESULT Recreate(const ComPtr<ID3D11Device>& device, INT32 count, abi::SizeInt32 size);
  void Close();

  bool closed() const;

  /// A free buffer, after waiting for one at most so long; null when there is none.
  std::unique_ptr<BufferLease> TakeFree(std::chrono::milliseconds patience);
  /// Lets a frame wait for the caller. A frame for buffers that were replaced is dropped.
  bool Queue(CapturedFrame frame);
  /// The oldest frame that waits.
  std::optional<CapturedFrame> TakeFrame();

 private:
  friend class BufferLease;
  void GiveBack(std::uint64_t generation, ComPtr<ID3D11Texture2D> texture);

  mutable std::mutex mutex_;
  std::condition_variable freed_;
  bool closed_ = false;
  std::uint64_t generation_ = 0;
  std::vector<ComPtr<ID3D11Texture2D>> free_;
  std::deque<CapturedFrame> waiting_;
};

}  // namespace brisolte::standins
