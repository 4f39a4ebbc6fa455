#include "common/service_thread.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <latch>
#include <semaphore>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace brisolte {
namespace {

using namespace std::chrono_literals;
using ::testing::Optional;
using ::testing::ThrowsMessage;

ServiceThread::Surroundings Patient(std::chrono::milliseconds patience = 60s) {
  ServiceThread::Surroundings surroundings;
  surroundings.patience = patience;
  return surroundings;
}

/// Something that calls can hang on, and a count of those that have come back.
struct Obstacle {
  std::binary_semaphore gone{0};
  std::latch cameBack{1};
};

/// A call that hangs until the obstacle is gone, and owns it.
auto HangOn(std::shared_ptr<Obstacle> obstacle) {
  return [obstacle = std::move(obstacle)] {
    obstacle->gone.acquire();
    obstacle->cameBack.count_down();
    return 0;
  };
}

TEST(ServiceThread, GivesResultsAndRaisesExceptions) {
  ServiceThread thread(Patient());
  EXPECT_THAT(thread.Run([] { return std::string("done"); }), Optional(std::string("done")));
  EXPECT_THAT([&] { thread.Run([]() -> int { throw std::runtime_error("refused"); }); },
              ThrowsMessage<std::runtime_error>("refused"));
  EXPECT_TRUE(thread.Perform([] {}));
}

TEST(ServiceThread, MakesAllCallsOnOneThreadOfItsOwn) {
  ServiceThread thread(Patient());
  const auto id = [] { return std::this_thread::get_id(); };
  const auto first = thread.Run(id);
  EXPECT_NE(first, std::this_thread::get_id());
  EXPECT_EQ(thread.Run(id), first);
  EXPECT_EQ(std::async(std::launch::async, [&] { return thread.Run(id); }).get(), first);
}

TEST(ServiceThread, LetsGoOfWhatACallOwnsBeforeItsCallerGoesOn) {
  ServiceThread thread(Patient());
  std::thread::id last;
  auto owned = std::shared_ptr<int>(new int, [&last](const int* number) {
    last = std::this_thread::get_id();
    const std::unique_ptr<const int> gone(number);
  });
  const auto id = thread.Run([owned = std::move(owned)] { return std::this_thread::get_id(); });
  EXPECT_THAT(id, Optional(last));
}

TEST(ServiceThread, LeavesACallBehindThatDoesNotComeBack) {
  ServiceThread thread(Patient(20ms));
  const auto obstacle = std::make_shared<Obstacle>();
  EXPECT_EQ(thread.Run(HangOn(obstacle)), std::nullopt);
  EXPECT_EQ(thread.Run([] { return 5; }), 5);
  obstacle->gone.release();
  obstacle->cameBack.wait();
  EXPECT_EQ(thread.Run([] { return 6; }), 6);
}

TEST(ServiceThread, GivesCallsBehindAHangingOneANewThread) {
  ServiceThread thread(Patient(200ms));
  const auto obstacle = std::make_shared<Obstacle>();
  std::binary_semaphore hanging{0};
  auto first = std::async(std::launch::async, [&] {
    return thread.Run([&hanging, call = HangOn(obstacle)] {
      hanging.release();
      return call();
    });
  });
  hanging.acquire();
  auto second = std::async(std::launch::async, [&] { return thread.Run([] { return 5; }); });
  EXPECT_EQ(first.get(), std::nullopt);
  EXPECT_EQ(second.get(), 5);
  obstacle->gone.release();
  obstacle->cameBack.wait();
}

TEST(ServiceThread, EndsAThreadThatWasLeftBehindWhenItsCallComesBack) {
  std::atomic<int> begun{0};
  const auto ended = std::make_shared<std::counting_semaphore<>>(0);
  auto surroundings = Patient(20ms);
  surroundings.around = [&begun, ended](const std::function<void()>& work) {
    ++begun;
    work();
    ended->release();
  };
  const auto obstacle = std::make_shared<Obstacle>();
  {
    ServiceThread thread(surroundings);
    EXPECT_EQ(thread.Run(HangOn(obstacle)), std::nullopt);
    EXPECT_EQ(thread.Run([] { return 5; }), 5);
    EXPECT_EQ(begun, 2);
    obstacle->gone.release();
    EXPECT_TRUE(ended->try_acquire_for(20s)) << "the thread left behind";
  }
  EXPECT_TRUE(ended->try_acquire_for(20s)) << "the thread in use";
}

TEST(ServiceThread, LetsItsCallersDoWhatTheyMustWhileTheyWait) {
  const auto caller = std::this_thread::get_id();
  std::counting_semaphore<> served{0};
  auto surroundings = Patient();
  surroundings.meanwhile = [&] {
    if (std::this_thread::get_id() == caller) {
      served.release();
    }
  };
  ServiceThread thread(surroundings);
  EXPECT_TRUE(thread.Run([&served] { return served.try_acquire_for(20s); }).value_or(false));
}

TEST(ServiceThread, ServesManyCallersAtOnce) {
  ServiceThread thread(Patient());
  int count = 0;  // touched by calls only, which come one after the other
  {
    std::vector<std::jthread> callers;
    for (int i = 0; i < 4; ++i) {
      callers.emplace_back([&] {
        for (int n = 0; n < 100; ++n) {
          thread.Perform([&count] { ++count; });
        }
      });
    }
  }
  EXPECT_EQ(thread.Run([&count] { return count; }), 400);
}

}  // namespace
}  // namespace brisolte
