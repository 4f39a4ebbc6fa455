#include "common/service_thread.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <exception>
#include <mutex>
#include <thread>

namespace brisolte {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kLookEvery{10};

struct Call {
  std::function<void()> work;
  std::optional<Clock::time_point> started = std::nullopt;
  bool ended = false;
  std::exception_ptr error = nullptr;
};

/// Lets go of what the call owns before anybody is told that it has ended.
std::exception_ptr Do(Call& call) {
  std::exception_ptr error = nullptr;
  try {
    call.work();
  } catch (...) {
    error = std::current_exception();
  }
  call.work = nullptr;
  return error;
}

}  // namespace

/// What the callers and the threads share, those left behind too. Everything but `surroundings` and a running
/// call's work is guarded by the mutex.
struct ServiceThread::State {
  explicit State(Surroundings given) : surroundings(std::move(given)) {}

  const Surroundings surroundings;
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::shared_ptr<Call>> waiting;
  bool hasThread = false;
  std::uint64_t threadsLeft = 0;  ///< tells the thread in use from those before it

  /// Needs the mutex, for which the thread waits in turn. So it cannot end before it is detached: MinGW's
  /// threads library gives the record of a thread that does both at once back twice, and the next two threads
  /// share it.
  void StartThread(const std::shared_ptr<State>& self) {
    std::thread([self, number = threadsLeft] {
      self->surroundings.around([&] { self->WorkOff(number); });
    }).detach();
    hasThread = true;
  }

  void LeaveThread() {
    ++threadsLeft;
    hasThread = false;
    changed.notify_all();
  }

  void WorkOff(std::uint64_t number) {
    std::unique_lock lock(mutex);
    while (true) {
      changed.wait(lock, [&] { return threadsLeft != number || !waiting.empty(); });
      if (threadsLeft != number) {
        return;
      }
      const std::shared_ptr<Call> call = std::move(waiting.front());
      waiting.pop_front();
      call->started = Clock::now();
      lock.unlock();
      std::exception_ptr error = Do(*call);
      lock.lock();
      call->error = std::move(error);
      call->ended = true;
      changed.notify_all();
    }
  }
};

ServiceThread::ServiceThread(Surroundings surroundings)
    : state_(std::make_shared<State>(std::move(surroundings))) {}

ServiceThread::~ServiceThread() {
  const std::lock_guard lock(state_->mutex);
  state_->LeaveThread();
}

bool ServiceThread::Perform(std::function<void()> work) {
  State& state = *state_;
  const auto call = std::make_shared<Call>(Call{.work = std::move(work)});
  std::unique_lock lock(state.mutex);
  state.waiting.push_back(call);
  state.changed.notify_all();
  while (!call->ended) {
    // The call before this one may have taken the thread with it.
    if (!call->started && !state.hasThread) {
      try {
        state.StartThread(state_);
      } catch (...) {
        std::erase(state.waiting, call);
        throw;
      }
    }
    const auto started = call->started;
    if (started && Clock::now() - *started > state.surroundings.patience) {
      state.LeaveThread();
      return false;
    }
    state.changed.wait_for(lock, kLookEvery, [&] { return call->ended; });
    if (!call->ended) {
      lock.unlock();
      state.surroundings.meanwhile();
      lock.lock();
    }
  }
  if (call->error) {
    std::rethrow_exception(call->error);
  }
  return true;
}

}  // namespace brisolte
