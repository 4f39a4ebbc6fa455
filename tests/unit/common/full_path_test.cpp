#include "common/full_path.h"

#include <gtest/gtest.h>

#include <vector>

#include "common/text.h"

namespace brisolte {
namespace {

/// Another current directory for the time of a test.
class CurrentDirectory {
 public:
  explicit CurrentDirectory(const std::filesystem::path& directory) {
    std::filesystem::current_path(directory);
  }
  CurrentDirectory(const CurrentDirectory&) = delete;
  CurrentDirectory& operator=(const CurrentDirectory&) = delete;
  ~CurrentDirectory() { std::filesystem::current_path(before_); }

 private:
  const std::filesystem::path before_ = std::filesystem::current_path();
};

TEST(ParentDirectory, IsWhatStandsBeforeTheLastSeparators) {
  EXPECT_EQ(ParentDirectory("a\\b\\c"), "a\\b");
  EXPECT_EQ(ParentDirectory("a/b"), "a");
  EXPECT_EQ(ParentDirectory("a\\/\\b"), "a");
  EXPECT_EQ(ParentDirectory("C:\\a"), "C:");
  EXPECT_EQ(ParentDirectory("\\a"), "");
  EXPECT_EQ(ParentDirectory("a"), "");
  EXPECT_EQ(ParentDirectory(""), "");
}

TEST(FullPath, OfARelativeOneBeginsAtTheCurrentDirectoryOfThatMoment) {
  const std::filesystem::path temporary = std::filesystem::temp_directory_path();
  std::filesystem::path file;
  std::filesystem::path folder;
  {
    const CurrentDirectory directory(temporary);
    file = FullFilePath("inner/file.mp4");
    folder = FullFolderPath("inner");
  }
  EXPECT_EQ(file, (temporary / "inner" / "file.mp4").make_preferred());
  EXPECT_EQ(folder, (temporary / "inner").make_preferred());
}

TEST(FullPath, KeepsAnyScript) {
  const std::string text = PathToUtf8(std::filesystem::temp_directory_path() / "x");
  const std::string name = text + "\xC3\xBC\xE6\xBC\xA2\xF0\x9F\x8E\xA5";
  EXPECT_EQ(PathToUtf8(FullFilePath(name)), name);
  EXPECT_EQ(PathToUtf8(FullFolderPath(name)), name);
}

#ifdef _WIN32

struct Example {
  std::string text;
  std::wstring full;
};

TEST(FullPath, OfAFileIsThatOfItsFolderAndItsName) {
  const CurrentDirectory directory(L"C:\\windows");
  const std::vector<Example> examples = {
      {R"(C:\a\b.mp4)", LR"(C:\a\b.mp4)"},
      {R"(C:/a/b.mp4)", LR"(C:\a\b.mp4)"},
      {R"(C:\a\\b.mp4)", LR"(C:\a\b.mp4)"},
      {R"(C:\a\.\x\..\b.mp4)", LR"(C:\a\b.mp4)"},
      {R"(C:\b.mp4)", LR"(C:\b.mp4)"},
      {R"(\b.mp4)", LR"(C:\b.mp4)"},
      {R"(\\b.mp4)", LR"(C:\b.mp4)"},
      {R"(b.mp4)", LR"(C:\windows\b.mp4)"},
      {R"(C:b.mp4)", LR"(C:\windows\b.mp4)"},
      {R"(C:a\b.mp4)", LR"(C:\windows\a\b.mp4)"},
      {R"(..\b.mp4)", LR"(C:\b.mp4)"},
      {R"(C:\a \b.mp4)", LR"(C:\a\b.mp4)"},
      {R"(C:\a...\b.mp4)", LR"(C:\a\b.mp4)"},
      {R"(\\server\share\b.mp4)", LR"(\\server\share\b.mp4)"},
      {R"(\\server\share\a\\b.mp4)", LR"(\\server\share\a\b.mp4)"},
      {R"(\\?\C:\a\b.mp4)", LR"(\\?\C:\a\b.mp4)"},
      {R"(\\?\C:\a\\b.mp4)", LR"(\\?\C:\a\b.mp4)"},
      {R"(\\?\C:\\b.mp4)", LR"(\\?\C:\b.mp4)"},
      {R"(\\?\C:\a \b.mp4)", LR"(\\?\C:\a \b.mp4)"},
      {R"(\\?\UNC\server\share\b.mp4)", LR"(\\?\UNC\server\share\b.mp4)"},
      {"", L""},
  };
  for (const Example& example : examples) {
    EXPECT_EQ(FullFilePath(example.text).native(), example.full) << example.text;
  }
}

TEST(FullPath, OfAFolderIsThatInFrontOfASeparator) {
  const CurrentDirectory directory(L"C:\\windows");
  const std::vector<Example> examples = {
      {"C:", L"C:\\"},
      {"C:\\", L"C:\\"},
      {"C:a", L"C:\\windows\\a"},
      {".", L"C:\\windows"},
      {"..", L"C:\\"},
      {"C:\\a ", L"C:\\a"},
      {R"(\\?\C:)", LR"(\\?\C:\)"},
      {R"(\\?\C:\a)", LR"(\\?\C:\a)"},
      {R"(\\server\share)", LR"(\\server\share)"},
      {"", L""},
  };
  for (const Example& example : examples) {
    EXPECT_EQ(FullFolderPath(example.text).native(), example.full) << example.text;
  }
}

TEST(FullPath, IsInAFormForItsLength) {
  const std::string folder = "C:\\" + std::string(200, 'a') + "\\" + std::string(200, 'b');
  EXPECT_EQ(PathToUtf8(FullFolderPath(folder)), R"(\\?\)" + folder);
  EXPECT_EQ(PathToUtf8(FullFilePath(folder + "\\x.mp4")), R"(\\?\)" + folder + "\\x.mp4");
  const std::string share = R"(\\server\share\)" + std::string(250, 'a');
  EXPECT_EQ(PathToUtf8(FullFolderPath(share)), R"(\\?\UNC\)" + share.substr(2));
}

#endif

}  // namespace
}  // namespace brisolte
