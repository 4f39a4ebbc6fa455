#pragma once

#include <mfobjects.h>
#include <wrl/client.h>

#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace brisolte::testing {

/// One call that the engine made: its name, and its arguments as text.
struct MediaCall {
  std::string name;
  std::string arguments;

  std::string text() const { return arguments.empty() ? name : name + " " + arguments; }
};

/// A sample as the sink writer was given it.
struct WrittenSample {
  std::uint32_t stream = 0;
  std::int64_t time = 0;
  std::int64_t duration = 0;
  std::uint32_t length = 0;
  std::vector<std::uint8_t> bytes;  ///< of sound
  std::uint8_t luma = 0;            ///< of a frame's first pixel
};

/// What the objects of a test have in common: the calls made on them, which of these fail, and what was
/// written. Any thread.
class MediaStage {
 public:
  /// Lets every call whose text begins so fail with this result, after the first `skip` ones.
  void Fail(const std::string& call, std::int32_t result, int skip = 0);
  void FailNothing();

  /// Writes a call down; a failing HRESULT when it is to fail.
  std::int32_t Enter(const std::string& name, const std::string& arguments = "");
  /// The same for something that is no call.
  std::int32_t Asked(const std::string& what);

  /// The same for a call that `action` makes in earnest unless it is to fail.
  template <typename Action>
  std::int32_t Call(const std::string& name, const std::string& arguments, Action action) {
    const std::int32_t failure = Enter(name, arguments);
    return failure < 0 ? failure : action();
  }

  /// While one of these lives, the calls of its thread are the test's own, and not written down.
  class Aside {
   public:
    Aside() : before_(std::exchange(aside, true)) {}
    Aside(const Aside&) = delete;
    Aside& operator=(const Aside&) = delete;
    ~Aside() { aside = before_; }

   private:
    const bool before_;
  };

  /// What a sink writer's stream was given: one text for `AddStream` and one for `SetInputMediaType`.
  void AddType(const std::string& type);
  std::vector<std::string> types() const;

  /// A texture that a sample was made over; how many different ones there were.
  void AddTexture(const void* texture);
  std::size_t textures() const;

  /// The device that the engine made for itself.
  void SetOwnDevice(const void* device);
  bool IsOwnDevice(const void* device) const;

  /// Holds every sample from now on as an encoder does that still reads it, or lets all go.
  void KeepSamples(bool keep);
  /// A sample that was written.
  void Offer(IMFSample& sample);
  std::vector<Microsoft::WRL::ComPtr<IMFSample>> kept() const;

  /// Keeps writes waiting, or lets them go.
  void HoldWrites(bool hold);
  /// Called by the sink writer for a sample that is not to fail.
  void Write(WrittenSample sample);

  /// Waits until this many samples arrived at the sink writer, also those it still holds up or failed.
  std::vector<WrittenSample> AwaitSamples(std::size_t count);
  std::vector<WrittenSample> samples() const;

  std::vector<MediaCall> calls() const;
  /// The texts of the calls that begin so.
  std::vector<std::string> calls(const std::string& begin) const;
  void ForgetCalls();
  /// Waits until this many calls begin so.
  bool AwaitCalls(const std::string& begin, std::size_t count);

 private:
  static thread_local bool aside;

  std::int32_t FailureOf(const std::string& text);

  struct Failure {
    std::int32_t result = 0;
    int skip = 0;
  };

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::map<std::string, Failure> failures_;
  std::vector<MediaCall> calls_;
  std::vector<std::string> types_;
  std::set<const void*> textures_;
  const void* ownDevice_ = nullptr;
  bool keeps_ = false;
  std::vector<Microsoft::WRL::ComPtr<IMFSample>> kept_;
  std::vector<WrittenSample> samples_;
  bool hold_ = false;
};

}  // namespace brisolte::testing
