#include "capture/replaced_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "common/text.h"
#include "support/temporary_directory.h"

namespace brisolte {
namespace {

using testing::TemporaryDirectory;

class ReplacedFileTest : public ::testing::Test {
 protected:
  static void WriteText(const std::filesystem::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
  }
  std::string Text() const {
    std::ifstream file(PathFromUtf8(path_), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::ptrdiff_t FileCount() const {
    const std::filesystem::directory_iterator files(directory_.path());
    return std::distance(begin(files), end(files));
  }

  const TemporaryDirectory directory_;
  const std::string path_ = directory_ / "file";
};

TEST_F(ReplacedFileTest, TakesItsPlaceWhenItIsComplete) {
  for (const std::string text : {"first", "second"}) {
    ReplacedFile file;
    ASSERT_EQ(file.Reserve(path_), S_OK);
    WriteText(file.temporaryPath(), text);
    EXPECT_EQ(file.Commit(), S_OK);
    EXPECT_EQ(Text(), text);
    EXPECT_EQ(FileCount(), 1);
  }
}

TEST_F(ReplacedFileTest, LeavesNothingWhenItIsNot) {
  for (const std::string before : {"", "old"}) {
    if (!before.empty()) {
      WriteText(PathFromUtf8(path_), before);
    }
    {
      ReplacedFile file;
      ASSERT_EQ(file.Reserve(path_), S_OK);
      WriteText(file.temporaryPath(), "half");
      EXPECT_EQ(Text(), before);
    }
    EXPECT_EQ(Text(), before);
    EXPECT_EQ(FileCount(), before.empty() ? 0 : 1);
  }
}

TEST_F(ReplacedFileTest, SharesItsPlaceWithOthers) {
  ReplacedFile first;
  ReplacedFile second;
  ASSERT_EQ(first.Reserve(path_), S_OK);
  ASSERT_EQ(second.Reserve(path_), S_OK);
  EXPECT_NE(first.temporaryPath(), second.temporaryPath());
  WriteText(first.temporaryPath(), "first");
  WriteText(second.temporaryPath(), "second");
  EXPECT_EQ(second.Commit(), S_OK);
  EXPECT_EQ(first.Commit(), S_OK);
  EXPECT_EQ(Text(), "first");
  EXPECT_EQ(FileCount(), 1);
}

TEST_F(ReplacedFileTest, GivesWayToAFileOfItsTemporaryName) {
  std::filesystem::path next;
  {
    ReplacedFile file;
    ASSERT_EQ(file.Reserve(path_), S_OK);
    next = file.temporaryPath();
  }
  // Names are numbered, so one of the following is the next.
  const std::wstring name = next.stem().wstring();
  const auto dash = name.rfind(L'-');
  const int number = std::stoi(name.substr(dash + 1));
  for (int i = 1; i <= 3; ++i) {
    WriteText(next.parent_path() / (name.substr(0, dash + 1) + std::to_wstring(number + i) + L".tmp"),
              "kept");
  }
  {
    ReplacedFile file;
    ASSERT_EQ(file.Reserve(path_), S_OK);
    EXPECT_EQ(FileCount(), 4);
  }
  EXPECT_EQ(FileCount(), 3);
}

TEST_F(ReplacedFileTest, KeepsWhatIsThereWhenItCannotTakeItsPlace) {
  ReplacedFile file;
  ASSERT_EQ(file.Reserve(path_), S_OK);
  WriteText(file.temporaryPath(), "new");
  WriteText(PathFromUtf8(path_), "old");
  {
    const std::unique_ptr<void, decltype(&CloseHandle)> held(
        CreateFileW(PathFromUtf8(path_).c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0,
                    nullptr),
        &CloseHandle);
    EXPECT_TRUE(FAILED(file.Commit()));
  }
  EXPECT_EQ(Text(), "old");
  EXPECT_EQ(file.Commit(), S_OK);
  EXPECT_EQ(Text(), "new");
}

TEST_F(ReplacedFileTest, RefusesWhatNamesNoFile) {
  std::filesystem::create_directory(directory_.path() / "inner");
  const std::vector<std::string> paths = {
      "",
      std::string("a\0b", 3),
      std::string("\0", 1),
      directory_ / "inner",
      directory_ / "inner\\",
      directory_ / "missing\\file",
      directory_ / std::string(300, 'x'),
      directory_ / "a?b",
  };
  for (const std::string& path : paths) {
    ReplacedFile file;
    EXPECT_TRUE(FAILED(file.Reserve(path))) << path;
    EXPECT_EQ(file.temporaryPath(), L"");
  }
  EXPECT_EQ(FileCount(), 1);
}

}  // namespace
}  // namespace brisolte
