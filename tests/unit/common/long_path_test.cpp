#include "common/long_path.h"

#include <gtest/gtest.h>

namespace brisolte {
namespace {

/// A path of this length that begins like this.
std::wstring PathOf(std::size_t length, const std::wstring& beginning) {
  return beginning + std::wstring(length - beginning.size(), L'a');
}

TEST(LongPath, LeavesWhatFileFunctionsTakeAsItIs) {
  EXPECT_EQ(LongPath(LR"(C:\a.png)"), LR"(C:\a.png)");
  EXPECT_EQ(LongPath(LR"(\\server\share\a.png)"), LR"(\\server\share\a.png)");
  const std::wstring longestFolder = PathOf(247, LR"(C:\)");
  EXPECT_EQ(LongPath(longestFolder), longestFolder);
}

TEST(LongPath, MarksWhatIsTooLongForThem) {
  const std::wstring local = PathOf(248, LR"(C:\)");
  EXPECT_EQ(LongPath(local), LR"(\\?\)" + local);
  const std::wstring share = PathOf(300, LR"(\\server\share\)");
  EXPECT_EQ(LongPath(share), LR"(\\?\UNC\server\share\)" + share.substr(15));
}

TEST(LongPath, LeavesWhatIsMarkedAlready) {
  for (const std::wstring beginning : {LR"(\\?\C:\)", LR"(\\.\pipe\)", LR"(\\?\UNC\server\share\)"}) {
    const std::wstring path = PathOf(400, beginning);
    EXPECT_EQ(LongPath(path), path);
  }
}

TEST(LongPath, LeavesWhatNoFileSystemHolds) {
  const std::wstring path = PathOf(40'000, LR"(C:\)");
  EXPECT_EQ(LongPath(path), path);
}

TEST(LongPath, LeavesWhatIsNotFull) {
  for (const std::wstring beginning : {L"", L"folder\\", L"\\", L"C:", L"C:folder\\"}) {
    const std::wstring path = PathOf(70000, beginning);
    EXPECT_EQ(LongPath(path), path);
  }
}

}  // namespace
}  // namespace brisolte
