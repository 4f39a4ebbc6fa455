#pragma once

#include <algorithm>
#include <iostream>
#include <mutex>
#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include "common/logger.h"

namespace brisolte::testing {

/// Collects what the logger writes while it lives, from any thread. Level and stream are back as they were
/// afterwards.
class CapturedLog {
 public:
  explicit CapturedLog(LogLevel level = LogLevel::kInfo) : levelBefore_(Logger::Level()) {
    Logger::SetLevel(level);
    streamBefore_ = std::cout.rdbuf(&text_);
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
  class Text : public std::streambuf {
   public:
    std::string str() const {
      const std::scoped_lock lock(mutex_);
      return text_;
    }

   protected:
    int_type overflow(int_type character) override {
      const std::scoped_lock lock(mutex_);
      text_.push_back(traits_type::to_char_type(character));
      return character;
    }
    std::streamsize xsputn(const char* characters, std::streamsize count) override {
      const std::scoped_lock lock(mutex_);
      text_.append(characters, static_cast<std::size_t>(count));
      return count;
    }

   private:
    mutable std::mutex mutex_;
    std::string text_;
  };

  Text text_;
  std::streambuf* streamBefore_ = nullptr;
  LogLevel levelBefore_;
};

}  // namespace brisolte::testing
