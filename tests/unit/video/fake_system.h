#pragma once

#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "common/hresult_error.h"
#include "support/fake_desktop.h"
#include "video/capture_platform.h"

namespace brisolte::testing {

inline constexpr auto kFailure = static_cast<std::int32_t>(0x80004005);

/// What happened, in order, from any thread.
class Journal {
 public:
  void Note(std::string entry) {
    const std::lock_guard lock(mutex_);
    entries_.push_back(std::move(entry));
  }

  std::vector<std::string> entries() const {
    const std::lock_guard lock(mutex_);
    return entries_;
  }

  void Clear() {
    const std::lock_guard lock(mutex_);
    entries_.clear();
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> entries_;
};

/// A system to capture from, with answers that a test may change. It outlives what is made on it.
struct FakeSystem {
  FakeSystem() = default;
  FakeSystem(const FakeSystem&) = delete;
  FakeSystem& operator=(const FakeSystem&) = delete;
  ~FakeSystem() = default;

  Journal journal;

  // What calls by these names return; 0 when not listed.
  std::map<std::string, std::int32_t> results;
  // What calls by these names do not give.
  std::map<std::string, bool> missing;
  // What calls by these names raise.
  std::map<std::string, std::int32_t> raised;

  FakeDesktop desktop{[this](const std::string& call) { journal.Note(call); }};
  PixelSize itemSize{1920, 1080};

  CapturePlatform::FrameArrivedHandler handler;
  std::mutex framesMutex;
  std::deque<std::int64_t> frames;  // times of the frames in the pool, in 100 ns
  int openFrames = 0;               // counted inside the handler only
  int mostOpenFrames = 0;
  bool converts = true;

  std::int32_t Answer(const std::string& call) {
    journal.Note(call);
    RaiseIfTold(call);
    const auto result = results.find(call);
    return result == results.end() ? 0 : result->second;
  }

  void RaiseIfTold(const std::string& call) {
    if (const auto told = raised.find(call); told != raised.end()) {
      throw HResultError(told->second);
    }
  }

  bool Gives(const std::string& thing) const { return !missing.contains(thing); }

  /// Puts a frame of this time into the pool and calls the handler, as the service does on a thread of its
  /// own.
  std::int32_t Arrive(std::int64_t ticks) {
    {
      const std::lock_guard lock(framesMutex);
      frames.push_back(ticks);
    }
    return CallHandler();
  }

  std::int32_t ArriveAtMs(std::int64_t ms) { return Arrive(ms * 10'000); }

  /// The handler's answer, whether there is a frame or none.
  std::int32_t CallHandler();
};

class FakeFrame : public CapturedFrame {
 public:
  FakeFrame(FakeSystem& system, std::int64_t ticks) : system_(system), ticks_(ticks) {
    system_.mostOpenFrames = std::max(system_.mostOpenFrames, ++system_.openFrames);
  }
  FakeFrame(const FakeFrame&) = delete;
  FakeFrame& operator=(const FakeFrame&) = delete;
  ~FakeFrame() override {
    --system_.openFrames;
    system_.journal.Note("release frame");
  }

  std::int64_t SystemRelativeTime() override {
    system_.RaiseIfTold("SystemRelativeTime");
    return ticks_;
  }

  bool SurfaceFromFrame(VideoFrame& frame, const FrameTiming& timing) override {
    system_.journal.Note("convert " + std::to_string(timing.sinceStart) + " " +
                         std::to_string(timing.sinceLast));
    if (!system_.converts) {
      return false;
    }
    frame.pixels = {pixels_.data(), 4, 8};
    frame.timestamp = timing.sinceStart;
    frame.duration = timing.sinceLast;
    frame.mapped = true;
    return true;
  }

  void Close() override {
    system_.journal.Note("close frame");
    system_.RaiseIfTold("CloseFrame");
  }

 private:
  FakeSystem& system_;
  std::int64_t ticks_;
  std::vector<std::uint8_t> pixels_ = std::vector<std::uint8_t>(8, 7);
};

class FakeFrameSource : public FrameSource {
 public:
  explicit FakeFrameSource(FakeSystem& system) : system_(system) {}

  std::unique_ptr<CapturedFrame> TryGetNextFrame() override {
    system_.RaiseIfTold("TryGetNextFrame");
    const std::lock_guard lock(system_.framesMutex);
    if (system_.frames.empty()) {
      return nullptr;
    }
    const std::int64_t ticks = system_.frames.front();
    system_.frames.pop_front();
    return std::make_unique<FakeFrame>(system_, ticks);
  }

 private:
  FakeSystem& system_;
};

inline std::int32_t FakeSystem::CallHandler() {
  FakeFrameSource source(*this);
  return handler(source);
}

class FakeCapturePlatform : public CapturePlatform {
 public:
  explicit FakeCapturePlatform(std::shared_ptr<FakeSystem> system) : system_(std::move(system)) {}
  FakeCapturePlatform(const FakeCapturePlatform&) = delete;
  FakeCapturePlatform& operator=(const FakeCapturePlatform&) = delete;
  ~FakeCapturePlatform() override { system_->journal.Note("platform gone"); }

  std::int32_t CreateDevice(DriverType type, std::int32_t& featureLevel) override {
    featureLevel = 0xb100;
    return system_->Answer("CreateDevice " + std::to_string(static_cast<std::int32_t>(type)));
  }
  std::int32_t QueryVideoDevice() override { return system_->Answer("QueryVideoDevice"); }
  std::int32_t QueryVideoContext() override { return system_->Answer("QueryVideoContext"); }
  ID3D11Device* Device() override { return reinterpret_cast<ID3D11Device*>(system_.get()); }

  bool WrapDevice() override {
    system_->Answer("WrapDevice");
    if (!system_->Gives("DXGI device")) {
      throw std::runtime_error("Failed to get DXGI device");
    }
    wrapped_ = system_->Gives("wrapped device");
    return wrapped_;
  }
  bool ObtainItemInterop() override {
    system_->Answer("ObtainItemInterop");
    return system_->Gives("interop");
  }
  std::string DeviceIdentifier() override { return "fake"; }
  bool HasWrappedDevice() override { return wrapped_ && system_->Gives("wrapped device for the pool"); }

  std::int32_t CreateItemForMonitor(std::int64_t monitor) override {
    return MakeItem("CreateItemForMonitor", monitor);
  }
  std::int32_t CreateItemForWindow(std::int64_t window) override {
    return MakeItem("CreateItemForWindow", window);
  }
  bool HasItem() override { return item_; }
  PixelSize ItemSize() override {
    system_->Answer("ItemSize");
    item_ = item_ && system_->Gives("item for the pool");
    return system_->itemSize;
  }

  bool CreateFramePool(PixelSize size, std::int32_t buffers) override {
    system_->journal.Note(std::to_string(buffers) + " buffers of " + std::to_string(size.width) + "x" +
                          std::to_string(size.height));
    system_->Answer("CreateFramePool");
    return system_->Gives("frame pool");
  }
  void SubscribeFrameArrived(FrameArrivedHandler handler) override {
    system_->Answer("SubscribeFrameArrived");
    system_->handler = std::move(handler);
  }
  std::int32_t CreateSession() override {
    session_ = system_->Gives("session");
    return system_->Answer("CreateSession");
  }
  bool HasSession() override { return session_; }

  std::int32_t CreateVideoProcessorEnumerator(const CaptureGeometry& geometry,
                                              std::int32_t frameRate) override {
    system_->journal.Note("frame begins at " + std::to_string(geometry.origin.x) + "," +
                          std::to_string(geometry.origin.y));
    system_->journal.Note("frame rate " + std::to_string(frameRate));
    return system_->Answer("CreateVideoProcessorEnumerator");
  }
  std::int32_t CreateVideoProcessor() override { return system_->Answer("CreateVideoProcessor"); }
  void ConvertOnCpu(const CaptureGeometry& geometry) override {
    system_->Answer("ConvertOnCpu " + std::to_string(geometry.frame.width) + "x" +
                    std::to_string(geometry.frame.height));
  }
  void SetOutputFormat(DxgiFormat format) override {
    system_->Answer("SetOutputFormat " + std::to_string(static_cast<std::uint32_t>(format)));
  }

  bool Perform(const char* name, const std::function<void()>& work) override {
    if (system_->Answer(std::string("Perform ") + name) != 0) {
      return false;
    }
    work();
    return true;
  }
  std::int32_t LeaveOutCursor() override { return system_->Answer("LeaveOutCursor"); }
  std::int32_t LeaveOutBorder() override { return system_->Answer("LeaveOutBorder"); }

  void StartCapture() override { system_->Answer("StartCapture"); }
  void CloseSession() override { system_->Answer("CloseSession"); }
  void ReleaseTarget() override { system_->Answer("ReleaseTarget"); }

 private:
  std::int32_t MakeItem(const std::string& call, std::int64_t target) {
    item_ = system_->Gives("item");
    system_->journal.Note("target " + std::to_string(target));
    return system_->Answer(call);
  }

  std::shared_ptr<FakeSystem> system_;
  bool wrapped_ = false;
  bool item_ = false;
  bool session_ = false;
};

}  // namespace brisolte::testing
