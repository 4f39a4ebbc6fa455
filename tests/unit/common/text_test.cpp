#include "common/text.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <random>

#include "support/captured_log.h"

#ifdef _WIN32
#include <windows.h>

#include "common/system_message.h"
#endif

namespace brisolte {
namespace {

using ::testing::StartsWith;

TEST(HResultText, WritesTheCodeUnpaddedInLowerCase) {
  EXPECT_THAT(HResultText(static_cast<std::int32_t>(0x80004005)), StartsWith("HRESULT: 0x80004005"));
  EXPECT_THAT(HResultText(static_cast<std::int32_t>(0x8007ABCD)), StartsWith("HRESULT: 0x8007abcd"));
  EXPECT_THAT(HResultText(1), StartsWith("HRESULT: 0x1"));
}

TEST(Path, KeepsAnyScriptFromUtf8AndBack) {
  const std::string text = "dir/\xC3\xBC\xE6\xBC\xA2\xF0\x9F\x8E\xA5";
  EXPECT_EQ(PathToUtf8(PathFromUtf8(text)), text);
}

TEST(Path, EndsAtTheFirstNul) {
  EXPECT_EQ(PathToUtf8(PathFromUtf8(std::string("ab\0cd", 5))), "ab");
}

#ifdef _WIN32

using testing::CapturedLog;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

TEST(HResultText, AppendsTheSystemsMessageAsItStands) {
  EXPECT_THAT(HResultText(static_cast<std::int32_t>(0x80070005)),
              ::testing::MatchesRegex("HRESULT: 0x80070005 - .+\r\n"));
  EXPECT_THAT(HResultText(0), StartsWith("HRESULT: 0x0 - "));
}

TEST(HResultText, EndsAfterTheCodeWithoutASystemMessage) {
  EXPECT_EQ(HResultText(static_cast<std::int32_t>(0xA1234567)), "HRESULT: 0xa1234567");
}

TEST(SystemMessage, IsUtf8InEveryLanguage) {
  // The German word for "invalid" has an umlaut.
  EXPECT_THAT(SystemMessage(E_HANDLE, MAKELANGID(LANG_GERMAN, SUBLANG_GERMAN)), HasSubstr("ng\xC3\xBCltig"));
}

TEST(SystemTextToUtf8, ReadsWhatIsNotUtf8InTheAnsiCodePage) {
  EXPECT_EQ(SystemTextToUtf8("ung\xFCltig"), "ung\xC3\xBCltig");
}

TEST(SystemTextToUtf8, KeepsUtf8) {
  const std::string text = "a\xC3\xBC\xE6\xBC\xA2\xF0\x9F\x8E\xA5";
  EXPECT_EQ(SystemTextToUtf8(text), text);
}

TEST(ToWide, ConvertsUtf8) {
  EXPECT_EQ(ToWide("a\xC3\xBC\xF0\x9F\x8E\xA5"), L"a\u00FC\xD83C\xDFA5");
}

TEST(ToWide, ReadsWhatIsNotUtf8InTheAnsiCodePage) {
  const CapturedLog log;
  EXPECT_EQ(ToWide("a\xFC"
                   "b")
                .size(),
            3U);
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(Conversion, OfNothingIsNothingAndLogsNothing) {
  const CapturedLog log;
  EXPECT_EQ(ToWide(""), L"");
  EXPECT_EQ(ToUtf8(L""), "");
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(ToUtf8, ConvertsUtf16) {
  EXPECT_EQ(ToUtf8(L"a\u00FC\xD83C\xDFA5"), "a\xC3\xBC\xF0\x9F\x8E\xA5");
}

// Titles of windows and paths of callers are whatever others made them.
TEST(Conversion, TakesAnyText) {
  const CapturedLog log;
  const auto seed = std::random_device()();
  SCOPED_TRACE(seed);
  std::mt19937 random(seed);
  for (int round = 0; round < 20'000; ++round) {
    std::string bytes(random() % 64, ' ');
    std::ranges::generate(bytes, [&] { return static_cast<char>(random()); });
    std::wstring units(random() % 64, L' ');
    std::ranges::generate(units, [&] { return static_cast<wchar_t>(random()); });
    EXPECT_LE(ToWide(bytes).size(), bytes.size());
    EXPECT_LE(ToUtf8(units).size(), 3 * units.size());
    PathToUtf8(PathFromUtf8(bytes));
  }
}

#endif

}  // namespace
}  // namespace brisolte
