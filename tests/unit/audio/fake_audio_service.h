#pragma once

#include <audioclient.h>
#include <mmdeviceapi.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "common/com_apartment.h"

namespace brisolte::testing {

/// A packet that a capture client hands out.
struct FakePacket {
  std::vector<std::uint8_t> bytes;
  std::uint32_t frames = 0;
};

/// One endpoint of the fake service.
struct FakeEndpoint {
  std::string id;
  std::wstring name;
  /// VT_LPWSTR gives the name; anything else is a value that is no text.
  VARTYPE nameType = VT_LPWSTR;
  DWORD state = DEVICE_STATE_ACTIVE;
  /// As bytes in memory; empty: the client gives no format.
  // NOLINTNEXTLINE(readability-redundant-member-init): without it GCC wants it named wherever one is made.
  std::vector<std::uint8_t> mixFormat = {};
};

/// What a client's `Initialize` was called with.
struct InitializeCall {
  std::string client;
  AUDCLNT_SHAREMODE mode;
  DWORD flags;
  REFERENCE_TIME duration;
  REFERENCE_TIME periodicity;
  std::vector<std::uint8_t> format;
  bool hasSession;
};

/// The system's audio service as this process finds it through COM while the object lives, on the thread that
/// made it, which it puts into a single-threaded apartment.
///
/// Calls are named by their object and method: "factory.CreateInstance", "enumerator.GetDevice",
/// "collection.Item(0)", "ID.Activate", "ID.properties.GetValue". The first client of an endpoint is
/// "ID.client", the second "ID.player", their services "ID.capture" and "ID.render".
class FakeAudioService {
 public:
  FakeAudioService();
  FakeAudioService(const FakeAudioService&) = delete;
  FakeAudioService& operator=(const FakeAudioService&) = delete;
  /// Expects that every object was released and every format freed.
  ~FakeAudioService();

  // Set up before the service is used.
  std::vector<FakeEndpoint> endpoints;
  std::string defaultId;
  UINT32 bufferFrames = 480;

  /// From now on the named call gives this code; a success code lets it work again.
  void Fail(const std::string& call, HRESULT result);
  /// From now on the named call does this first, on its thread.
  void During(const std::string& call, std::function<void()> action);
  /// Adds a packet to the queue of an endpoint's capture client.
  void Queue(const std::string& id, FakePacket packet);
  /// Frames that the player's buffer still holds.
  void SetPadding(UINT32 frames);

  std::vector<std::string> calls();
  std::ptrdiff_t count(const std::string& call);
  /// Waits until a call was made so many times; false after half a minute.
  bool WaitFor(const std::string& call, std::ptrdiff_t times = 1);
  const std::vector<InitializeCall>& initializeCalls() const { return initializeCalls_; }
  /// What the player last wrote.
  std::vector<std::uint8_t> played();
  /// Frames and flags of each time the player, or a capture client ("ID.capture"), gave a buffer back.
  std::vector<std::pair<UINT32, DWORD>> released(const std::string& object);
  /// Whether a call was ever made from a thread outside the multithreaded apartment.
  bool CalledOutsideMultithreadedApartment(const std::string& call);

  int liveObjects() const { return liveObjects_; }

  // For the objects.
  HRESULT Enter(const std::string& call);
  const FakeEndpoint* Find(const std::string& id) const;
  void CountObject(int change) { liveObjects_ += change; }
  void Initialized(InitializeCall call) { initializeCalls_.push_back(std::move(call)); }
  UINT32 NextPacketFrames(const std::string& id);
  FakePacket TakePacket(const std::string& id);
  UINT32 padding();
  void Played(std::vector<std::uint8_t> bytes);
  void Released(const std::string& object, UINT32 frames, DWORD flags);

 private:
  std::function<void()> Action(const std::string& call);

  ComApartment com_{COINIT_APARTMENTTHREADED};
  DWORD registration_ = 0;
  std::atomic<int> liveObjects_ = 0;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> calls_;
  std::map<std::string, HRESULT> failures_;
  std::map<std::string, std::function<void()>> actions_;
  std::map<std::string, bool> outsideApartment_;
  std::vector<InitializeCall> initializeCalls_;
  std::map<std::string, std::deque<FakePacket>> packets_;
  UINT32 padding_ = 0;
  std::vector<std::uint8_t> played_;
  std::map<std::string, std::vector<std::pair<UINT32, DWORD>>> released_;
};

}  // namespace brisolte::testing
