#pragma once

#include <cstdint>
#include <string_view>

namespace brisolte {

/// How much the process writes; numbers as `setLogLevel` takes them.
enum class LogLevel : std::int32_t { kTrace = 0, kDebug = 1, kInfo = 2, kWarn = 3, kError = 4, kFatal = 5 };

/// The process-wide diagnostic channel: lines on standard output, filtered by one level that all instances
/// share.
///
/// Every operation may be called from any thread. A line is the local time, a tag and the UTF-8 message;
/// lines that different threads write at the same moment may interleave. There is no TRACE or FATAL line:
/// levels 0 and 1 both write everything, level 5 nothing.
class Logger {
 public:
  static void SetLevel(LogLevel level);
  static LogLevel Level();

  static void Debug(std::string_view message);
  static void Info(std::string_view message);
  static void Warning(std::string_view message);
  static void Error(std::string_view message);
};

}  // namespace brisolte
