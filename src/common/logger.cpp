#include "common/logger.h"

#include <atomic>
#include <iostream>

#include "common/local_time.h"

namespace brisolte {
namespace {

std::atomic<LogLevel> currentLevel{LogLevel::kInfo};

/// Writes the line when the current level is below `threshold`.
void Write(LogLevel threshold, std::string_view tag, std::string_view message) {
  if (Logger::Level() >= threshold) {
    return;
  }
  std::cout << LocalTimeText("%Y-%m-%d %H:%M:%S") << tag << message << '\n' << std::flush;
}

}  // namespace

void Logger::SetLevel(LogLevel level) {
  currentLevel.store(level, std::memory_order_relaxed);
}
LogLevel Logger::Level() {
  return currentLevel.load(std::memory_order_relaxed);
}

void Logger::Debug(std::string_view message) {
  Write(LogLevel::kInfo, " [DEBUG] ", message);
}
void Logger::Info(std::string_view message) {
  Write(LogLevel::kWarn, " [INFO] ", message);
}
void Logger::Warning(std::string_view message) {
  Write(LogLevel::kError, " [WARNING] ", message);
}
void Logger::Error(std::string_view message) {
  Write(LogLevel::kFatal, " [ERROR] ", message);
}

}  // namespace brisolte
