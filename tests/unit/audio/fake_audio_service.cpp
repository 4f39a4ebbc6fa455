#include "fake_audio_service.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>

#include "fake_audio_objects.h"
#include "task_memory.h"

namespace brisolte::testing {
namespace {

bool InMultithreadedApartment() {
  APTTYPE type{};
  APTTYPEQUALIFIER qualifier{};
  return SUCCEEDED(CoGetApartmentType(&type, &qualifier)) && type == APTTYPE_MTA &&
         qualifier != APTTYPEQUALIFIER_IMPLICIT_MTA;
}

}  // namespace

FakeAudioService::FakeAudioService() {
  const auto factory = MakeEnumeratorFactory(*this);
  const HRESULT result = CoRegisterClassObject(__uuidof(MMDeviceEnumerator), factory.Get(),
                                               CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &registration_);
  EXPECT_EQ(result, S_OK);
}

FakeAudioService::~FakeAudioService() {
  EXPECT_EQ(CoRevokeClassObject(registration_), S_OK);
  EXPECT_EQ(liveObjects_, 0);
  EXPECT_EQ(WatchedAllocations(), 0U);
}

void FakeAudioService::Fail(const std::string& call, HRESULT result) {
  const std::scoped_lock lock(mutex_);
  failures_[call] = result;
}

void FakeAudioService::During(const std::string& call, std::function<void()> action) {
  const std::scoped_lock lock(mutex_);
  actions_[call] = std::move(action);
}

std::function<void()> FakeAudioService::Action(const std::string& call) {
  const std::scoped_lock lock(mutex_);
  const auto action = actions_.find(call);
  return action != actions_.end() ? action->second : nullptr;
}

void FakeAudioService::Queue(const std::string& id, FakePacket packet) {
  const std::scoped_lock lock(mutex_);
  packets_[id].push_back(std::move(packet));
}

void FakeAudioService::SetPadding(UINT32 frames) {
  const std::scoped_lock lock(mutex_);
  padding_ = frames;
}

std::vector<std::string> FakeAudioService::calls() {
  const std::scoped_lock lock(mutex_);
  return calls_;
}

std::ptrdiff_t FakeAudioService::count(const std::string& call) {
  const std::scoped_lock lock(mutex_);
  return std::ranges::count(calls_, call);
}

bool FakeAudioService::WaitFor(const std::string& call, std::ptrdiff_t times) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, std::chrono::seconds(30),
                           [&] { return std::ranges::count(calls_, call) >= times; });
}

std::vector<std::uint8_t> FakeAudioService::played() {
  const std::scoped_lock lock(mutex_);
  return played_;
}

std::vector<std::pair<UINT32, DWORD>> FakeAudioService::released(const std::string& object) {
  const std::scoped_lock lock(mutex_);
  return released_[object];
}

bool FakeAudioService::CalledOutsideMultithreadedApartment(const std::string& call) {
  const std::scoped_lock lock(mutex_);
  return outsideApartment_[call];
}

HRESULT FakeAudioService::Enter(const std::string& call) {
  if (const auto action = Action(call)) {
    action();
  }
  const bool outside = !InMultithreadedApartment();
  const std::scoped_lock lock(mutex_);
  calls_.push_back(call);
  outsideApartment_[call] = outsideApartment_[call] || outside;
  changed_.notify_all();
  const auto failure = failures_.find(call);
  return failure != failures_.end() ? failure->second : S_OK;
}

const FakeEndpoint* FakeAudioService::Find(const std::string& id) const {
  const auto endpoint = std::ranges::find(endpoints, id, &FakeEndpoint::id);
  return endpoint != endpoints.end() ? &*endpoint : nullptr;
}

UINT32 FakeAudioService::NextPacketFrames(const std::string& id) {
  const std::scoped_lock lock(mutex_);
  const auto& packets = packets_[id];
  // Also a packet that will turn out to hold nothing is announced as one.
  return packets.empty() ? 0 : std::max(packets.front().frames, 1U);
}

FakePacket FakeAudioService::TakePacket(const std::string& id) {
  const std::scoped_lock lock(mutex_);
  auto& packets = packets_[id];
  if (packets.empty()) {
    return {};
  }
  FakePacket packet = std::move(packets.front());
  packets.pop_front();
  return packet;
}

UINT32 FakeAudioService::padding() {
  const std::scoped_lock lock(mutex_);
  return padding_;
}

void FakeAudioService::Played(std::vector<std::uint8_t> bytes) {
  const std::scoped_lock lock(mutex_);
  played_ = std::move(bytes);
}

void FakeAudioService::Released(const std::string& object, UINT32 frames, DWORD flags) {
  const std::scoped_lock lock(mutex_);
  released_[object].emplace_back(frames, flags);
}

}  // namespace brisolte::testing
