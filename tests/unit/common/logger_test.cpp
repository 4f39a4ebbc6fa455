#include "common/logger.h"

#include <gmock/gmock.h>

#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::MatchesRegex;

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
  EXPECT_THAT(log.text(), MatchesRegex("[0-9]+-[0-9]+-[0-9]+ [0-9]+:[0-9]+:[0-9]+ \\[INFO\\] hello\n"));
  EXPECT_EQ(log.text().find(" [INFO]"), std::string("2024-03-05 14:07:09").size());
}

TEST(Logger, WritesALineForAnEmptyMessage) {
  const CapturedLog log;
  Logger::Error("");
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] "));
}

}  // namespace
}  // namespace brisolte
