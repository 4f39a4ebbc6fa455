#include "capture/settings_lock.h"

#include <gtest/gtest.h>

#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace brisolte {
namespace {

TEST(SettingsLock, RaisesTheSystemErrorWhenItsOwnerLocksItAgain) {
  SettingsLock lock;
  const std::lock_guard guard(lock);
  try {
    const std::lock_guard again(lock);
    FAIL() << "locked twice";
  } catch (const std::system_error& error) {
    EXPECT_EQ(error.code(), std::errc::resource_deadlock_would_occur);
    EXPECT_STREQ(error.what(), "resource deadlock would occur");
  }
}

TEST(SettingsLock, IsHeldOnceAfterARefusedSecondLock) {
  SettingsLock lock;
  {
    const std::lock_guard guard(lock);
    EXPECT_THROW(lock.lock(), std::system_error);
  }
  std::jthread other([&] { const std::lock_guard guard(lock); });
  other.join();
  const std::lock_guard guard(lock);
}

TEST(SettingsLock, LetsOneThreadInAtATime) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 500;
  SettingsLock lock;
  int counter = 0;
  {
    std::vector<std::jthread> threads;
    threads.reserve(kThreads);
    for (int i = 0; i < kThreads; ++i) {
      threads.emplace_back([&] {
        for (int round = 0; round < kRounds; ++round) {
          const std::lock_guard guard(lock);
          ++counter;
        }
      });
    }
  }
  EXPECT_EQ(counter, kThreads * kRounds);
}

}  // namespace
}  // namespace brisolte
