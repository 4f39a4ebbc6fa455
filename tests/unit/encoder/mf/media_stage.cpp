#include "mf/media_stage.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace brisolte::testing {
namespace {

constexpr auto kLimit = std::chrono::seconds(60);

}  // namespace

thread_local bool MediaStage::aside = false;

void MediaStage::Fail(const std::string& call, std::int32_t result, int skip) {
  const std::scoped_lock lock(mutex_);
  failures_[call] = {result, skip};
}

void MediaStage::FailNothing() {
  const std::scoped_lock lock(mutex_);
  failures_.clear();
}

std::int32_t MediaStage::Enter(const std::string& name, const std::string& arguments) {
  if (aside) {
    return 0;
  }
  const std::scoped_lock lock(mutex_);
  calls_.push_back({name, arguments});
  changed_.notify_all();
  return FailureOf(calls_.back().text());
}

std::int32_t MediaStage::Asked(const std::string& what) {
  const std::scoped_lock lock(mutex_);
  return aside ? 0 : FailureOf(what);
}

std::int32_t MediaStage::FailureOf(const std::string& text) {
  for (auto& [call, failure] : failures_) {
    if (text.starts_with(call) && failure.skip-- <= 0) {
      return failure.result;
    }
  }
  return 0;
}

void MediaStage::AddType(const std::string& type) {
  const std::scoped_lock lock(mutex_);
  types_.push_back(type);
}

std::vector<std::string> MediaStage::types() const {
  const std::scoped_lock lock(mutex_);
  return types_;
}

void MediaStage::AddTexture(const void* texture) {
  const std::scoped_lock lock(mutex_);
  textures_.insert(texture);
}

std::size_t MediaStage::textures() const {
  const std::scoped_lock lock(mutex_);
  return textures_.size();
}

void MediaStage::SetOwnDevice(const void* device) {
  const std::scoped_lock lock(mutex_);
  ownDevice_ = device;
}

bool MediaStage::IsOwnDevice(const void* device) const {
  const std::scoped_lock lock(mutex_);
  return ownDevice_ == device;
}

void MediaStage::KeepSamples(bool keep) {
  std::vector<Microsoft::WRL::ComPtr<IMFSample>> released;
  const std::scoped_lock lock(mutex_);
  keeps_ = keep;
  released.swap(kept_);
}

void MediaStage::Offer(IMFSample& sample) {
  const std::scoped_lock lock(mutex_);
  if (keeps_) {
    kept_.emplace_back(&sample);
  }
}

std::vector<Microsoft::WRL::ComPtr<IMFSample>> MediaStage::kept() const {
  const std::scoped_lock lock(mutex_);
  return kept_;
}

void MediaStage::HoldWrites(bool hold) {
  const std::scoped_lock lock(mutex_);
  hold_ = hold;
  changed_.notify_all();
}

void MediaStage::Write(WrittenSample sample) {
  std::unique_lock lock(mutex_);
  samples_.push_back(std::move(sample));
  changed_.notify_all();
  EXPECT_TRUE(changed_.wait_for(lock, kLimit, [this] { return !hold_; }));
}

std::vector<WrittenSample> MediaStage::AwaitSamples(std::size_t count) {
  std::unique_lock lock(mutex_);
  EXPECT_TRUE(changed_.wait_for(lock, kLimit, [&] { return samples_.size() >= count; }));
  return samples_;
}

std::vector<WrittenSample> MediaStage::samples() const {
  const std::scoped_lock lock(mutex_);
  return samples_;
}

std::vector<MediaCall> MediaStage::calls() const {
  const std::scoped_lock lock(mutex_);
  return calls_;
}

std::vector<std::string> MediaStage::calls(const std::string& begin) const {
  std::vector<std::string> texts;
  for (const MediaCall& call : calls()) {
    if (call.text().starts_with(begin)) {
      texts.push_back(call.text());
    }
  }
  return texts;
}

void MediaStage::ForgetCalls() {
  const std::scoped_lock lock(mutex_);
  calls_.clear();
}

bool MediaStage::AwaitCalls(const std::string& begin, std::size_t count) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kLimit, [&] {
    return std::ranges::count_if(calls_, [&](const MediaCall& call) {
             return call.text().starts_with(begin);
           }) >= static_cast<std::ptrdiff_t>(count);
  });
}

}  // namespace brisolte::testing
