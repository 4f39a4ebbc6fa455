#include "capture/replaced_file.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "common/handle.h"
#include "common/text.h"
#include "support/temporary_directory.h"

namespace brisolte {
namespace {

using ::testing::Each;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;
using testing::TemporaryDirectory;

constexpr std::chrono::seconds kLong(60);
constexpr std::chrono::milliseconds kMoment(60);

Handle Open(const std::filesystem::path& path, DWORD access, DWORD sharing, DWORD flags = 0) {
  HANDLE handle = CreateFileW(path.c_str(), access, sharing, nullptr, OPEN_EXISTING, flags, nullptr);
  return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

/// Closes a file after a moment, on a thread of its own.
std::jthread LetGoLater(Handle& held) {
  return std::jthread([&held] {
    std::this_thread::sleep_for(kMoment);
    held.reset();
  });
}

/// The names of what is made, removed and renamed in a directory.
class DirectoryChanges {
 public:
  explicit DirectoryChanges(const std::filesystem::path& directory)
      : path_(directory),
        directory_(Open(directory, FILE_LIST_DIRECTORY,
                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                        FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OVERLAPPED)) {
    Watch();
  }
  DirectoryChanges(const DirectoryChanges&) = delete;
  DirectoryChanges& operator=(const DirectoryChanges&) = delete;
  ~DirectoryChanges() {
    CancelIo(directory_.get());
    Wait();
  }

  /// All since its construction.
  std::vector<std::wstring> Names() {
    const std::wstring end = L"end";
    std::ofstream(path_ / end) << "end";
    std::vector<std::wstring> names;
    while (std::ranges::find(names, end) == names.end() && Wait()) {
      Append(names);
      Watch();
    }
    std::erase(names, end);
    return names;
  }

 private:
  void Watch() {
    ReadDirectoryChangesW(directory_.get(), buffer_.data(), sizeof(buffer_), FALSE,
                          FILE_NOTIFY_CHANGE_FILE_NAME, nullptr, &read_, nullptr);
  }
  bool Wait() {
    DWORD size = 0;
    return GetOverlappedResult(directory_.get(), &read_, &size, TRUE) != FALSE && size > 0;
  }
  void Append(std::vector<std::wstring>& names) const {
    const auto* at = reinterpret_cast<const std::byte*>(buffer_.data());
    for (DWORD offset = 1; offset != 0; at += offset) {
      const auto* change = reinterpret_cast<const FILE_NOTIFY_INFORMATION*>(at);
      names.emplace_back(change->FileName, change->FileNameLength / sizeof(wchar_t));
      offset = change->NextEntryOffset;
    }
  }

  const std::filesystem::path path_;
  const Handle directory_;
  OVERLAPPED read_{};
  std::array<DWORD, 1024> buffer_{};
};

class ReplacedFileTest : public ::testing::Test {
 protected:
  static void WriteText(const std::filesystem::path& path, const std::string& text) {
    std::ofstream(path, std::ios::binary) << text;
  }
  std::string Text() const {
    std::ifstream file(PathFromUtf8(path_), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  Handle Hold(DWORD sharing) const { return Open(PathFromUtf8(path_), GENERIC_READ, sharing); }
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

TEST_F(ReplacedFileTest, MakesNothingInItsPlaceBeforeItIsComplete) {
  DirectoryChanges changes(directory_.path());
  {
    ReplacedFile file;
    ASSERT_EQ(file.Reserve(path_), S_OK);
  }
  const std::vector<std::wstring> names = changes.Names();
  EXPECT_THAT(names, Not(IsEmpty()));
  EXPECT_THAT(names, Each(StartsWith(L"brisolte-")));
}

TEST_F(ReplacedFileTest, WaitsWhileAnotherHasItsPlaceOpen) {
  WriteText(PathFromUtf8(path_), "old");
  ReplacedFile file(kLong);
  {
    Handle held = Hold(0);
    const std::jthread release = LetGoLater(held);
    ASSERT_EQ(file.Reserve(path_), S_OK);
  }
  WriteText(file.temporaryPath(), "new");
  {
    Handle held = Hold(FILE_SHARE_READ);
    const std::jthread release = LetGoLater(held);
    EXPECT_EQ(file.Commit(), S_OK);
  }
  EXPECT_EQ(Text(), "new");
}

TEST_F(ReplacedFileTest, WaitsWhileAnotherHasTheNewFileOpen) {
  ReplacedFile file(kLong);
  ASSERT_EQ(file.Reserve(path_), S_OK);
  WriteText(file.temporaryPath(), "new");
  Handle held = Open(file.temporaryPath(), GENERIC_READ, FILE_SHARE_READ);
  const std::jthread release = LetGoLater(held);
  EXPECT_EQ(file.Commit(), S_OK);
  EXPECT_EQ(Text(), "new");
}

TEST_F(ReplacedFileTest, KeepsWhatIsThereWhenItStaysOpen) {
  ReplacedFile file;
  ASSERT_EQ(file.Reserve(path_), S_OK);
  WriteText(file.temporaryPath(), "new");
  WriteText(PathFromUtf8(path_), "old");
  {
    const Handle held = Hold(FILE_SHARE_READ);
    EXPECT_TRUE(FAILED(file.Commit()));
    ReplacedFile other;
    EXPECT_EQ(other.Reserve(path_), HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION));
  }
  EXPECT_EQ(Text(), "old");
  EXPECT_EQ(file.Commit(), S_OK);
  EXPECT_EQ(Text(), "new");
}

TEST_F(ReplacedFileTest, WritesIntoAFileThatIsOpenAndSharedForWriting) {
  for (const std::string before : {"", "old", "a longer one that was there"}) {
    WriteText(PathFromUtf8(path_), before);
    const Handle held = Hold(FILE_SHARE_READ | FILE_SHARE_WRITE);
    {
      ReplacedFile file;
      ASSERT_EQ(file.Reserve(path_), S_OK);
      WriteText(file.temporaryPath(), "new one");
      EXPECT_EQ(file.Commit(), S_OK);
    }
    EXPECT_EQ(Text(), "new one");
    EXPECT_EQ(FileCount(), 1);
  }
}

TEST_F(ReplacedFileTest, LeavesAReadOnlyFile) {
  WriteText(PathFromUtf8(path_), "old");
  ASSERT_TRUE(SetFileAttributesW(PathFromUtf8(path_).c_str(), FILE_ATTRIBUTE_READONLY));
  {
    ReplacedFile file;
    if (SUCCEEDED(file.Reserve(path_))) {  // as it does for whoever may do everything
      WriteText(file.temporaryPath(), "new");
      EXPECT_EQ(file.Commit(), HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED));
    }
  }
  EXPECT_EQ(Text(), "old");
  SetFileAttributesW(PathFromUtf8(path_).c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST_F(ReplacedFileTest, FailsWithTooLongAName) {
  {
    ReplacedFile file;
    const HRESULT reserved = file.Reserve(directory_ / std::string(300, 'x'));
    // Wine calls such a file missing, and refuses only to make it.
    EXPECT_TRUE(FAILED(reserved) || FAILED(file.Commit()));
  }
  EXPECT_EQ(FileCount(), 0);
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
