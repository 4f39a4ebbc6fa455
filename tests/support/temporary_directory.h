#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>
#include <system_error>

#include "common/text.h"

namespace brisolte::testing {

/// A directory of its own for one test, gone with everything in it afterwards.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    static std::atomic<int> number = 0;
    const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
    path_ = std::filesystem::temp_directory_path() /
            ("brisolte-" + std::to_string(now) + "-" + std::to_string(number++));
    std::filesystem::create_directory(path_);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }

  /// What `name` (UTF-8) is called in here, as UTF-8 text.
  std::string operator/(const std::string& name) const { return PathToUtf8(path_ / PathFromUtf8(name)); }

 private:
  std::filesystem::path path_;
};

}  // namespace brisolte::testing
