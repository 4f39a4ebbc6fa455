#include "common/logger.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <string>

#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::string> LinesAtLevel(LogLevel level) {
  const CapturedLog log(level);
  Logger::Debug("one");
  Logger::Info("two");
  Logger::Warning("three");
  Logger::Error("four");
  return log.lines();
}

TEST(Logger, StartsAtInfo) {
  EXPECT_EQ(Logger::Level(), LogLevel::kInfo);
}

TEST(Logger, WritesWhatTheLevelLetsThrough) {
  const auto all = ElementsAre("[DEBUG] one", "[INFO] two", "[WARNING] three", "[ERROR] four");
  EXPECT_THAT(LinesAtLevel(LogLevel::kTrace), all);
  EXPECT_THAT(LinesAtLevel(LogLevel::kDebug), all);
  EXPECT_THAT(LinesAtLevel(LogLevel::kInfo), ElementsAre("[INFO] two", "[WARNING] three", "[ERROR] four"));
  EXPECT_THAT(LinesAtLevel(LogLevel::kWarn), ElementsAre("[WARNING] three", "[ERROR] four"));
  EXPECT_THAT(LinesAtLevel(LogLevel::kError), ElementsAre("[ERROR] four"));
  EXPECT_THAT(LinesAtLevel(LogLevel::kFatal), IsEmpty());
}

TEST(Logger, PutsTimeTagAndMessageOnALine) {
  const CapturedLog log;
  Logger::Info("hello");
  std::string shape = log.text();
  std::ranges::replace_if(shape, [](char c) { return c >= '0' && c <= '9'; }, 'd');
  EXPECT_EQ(shape, "dddd-dd-dd dd:dd:dd [INFO] hello\n") << log.text();
}

TEST(Logger, WritesALineForAnEmptyMessage) {
  const CapturedLog log;
  Logger::Error("");
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] "));
}

}  // namespace
}  // namespace brisolte
