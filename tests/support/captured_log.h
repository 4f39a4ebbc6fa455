#pragma once

#include <algorithm>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "common/logger.h"

namespace brisolte::testing {

/// Collects what the logger writes while it lives. Level and stream are back as they were afterwards.
class CapturedLog {
 public:
  explicit CapturedLog(LogLevel level = LogLevel::kDebug) : levelBefore_(Logger::Level()) {
    Logger::SetLevel(level);
    streamBefore_ = std::cout.rdbuf(text_.rdbuf());
  }
  CapturedLog(const CapturedLog&) = delete;
  CapturedLog& operator=(const CapturedLog&) = delete;
  ~CapturedLog() {
    std::cout.rdbuf(streamBefore_);
    Logger::SetLevel(levelBefore_);
  }

  std::string text() const { return text_.str(); }

  /// The lines so far as "[TAG] message", without their times.
  std::vector<std::string> lines() const {
    std::vector<std::string> lines;
    std::istringstream text(text_.str());
    for (std::string line; std::getline(text, line);) {
      const auto tag = line.find(" [");
      lines.push_back(tag == std::string::npos ? line : line.substr(tag + 1));
    }
    return lines;
  }

  /// How many lines are exactly this "[TAG] message".
  std::ptrdiff_t count(const std::string& line) const {
    const auto all = lines();
    return std::count(all.begin(), all.end(), line);
  }

  bool has(const std::string& line) const { return count(line) > 0; }

 private:
  std::ostringstream text_;
  std::streambuf* streamBefore_ = nullptr;
  LogLevel levelBefore_;
};

}  // namespace brisolte::testing
