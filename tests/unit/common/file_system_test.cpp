#include "common/file_system.h"

#include <gmock/gmock.h>

#include <fstream>
#include <string>

#include "common/full_path.h"
#include "support/temporary_directory.h"

namespace brisolte {
namespace {

using ::testing::HasSubstr;
using testing::TemporaryDirectory;

void Write(const std::filesystem::path& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}
std::string Text(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/// The text of the file-system error that the call raises.
template <typename Call>
std::string Raised(Call call) {
  try {
    call();
  } catch (const std::filesystem::filesystem_error& error) {
    return error.what();
  }
  return "nothing raised";
}

class FileSystemTest : public ::testing::Test {
 protected:
  const TemporaryDirectory directory_;
  const std::filesystem::path file_ = directory_.path() / "file";
};

TEST_F(FileSystemTest, TellsDirectoriesFromAllElse) {
  Write(file_, "text");
  EXPECT_TRUE(IsDirectory(directory_.path()));
  EXPECT_FALSE(IsDirectory(file_));
  EXPECT_FALSE(IsDirectory(file_ / "below"));
  EXPECT_FALSE(IsDirectory(directory_.path() / "missing"));
  EXPECT_FALSE(IsDirectory(directory_.path() / "missing" / "deeper"));
  EXPECT_FALSE(IsDirectory(""));
}

TEST_F(FileSystemTest, MakesAllMissingDirectories) {
  const std::filesystem::path deep = directory_.path() / "a" / "b" / "c";
  EXPECT_TRUE(MakeDirectories(deep));
  EXPECT_TRUE(IsDirectory(deep));
  EXPECT_FALSE(MakeDirectories(deep));
}

TEST_F(FileSystemTest, TakesAFileForADirectoryThatIsThere) {
  Write(file_, "text");
  EXPECT_FALSE(MakeDirectories(file_));
  EXPECT_THAT(Raised([this] { MakeDirectories(file_ / "below" / "deeper"); }),
              HasSubstr("create_directories"));
}

TEST_F(FileSystemTest, TestsWritingWhereAFileCanBe) {
  EXPECT_TRUE(TestWriting(file_));
  EXPECT_TRUE(std::filesystem::exists(file_));
  Write(file_, "text");
  EXPECT_TRUE(TestWriting(file_));
  EXPECT_EQ(Text(file_), "");
  EXPECT_FALSE(TestWriting(directory_.path()));
  EXPECT_FALSE(TestWriting(directory_.path() / "missing" / "file"));
  EXPECT_FALSE(TestWriting(""));
}

TEST_F(FileSystemTest, RemovesAFile) {
  Write(file_, "text");
  EXPECT_TRUE(RemoveFile(file_));
  EXPECT_FALSE(std::filesystem::exists(file_));
  EXPECT_FALSE(RemoveFile(file_));
}

TEST_F(FileSystemTest, MakesANewFileOnceOnly) {
  {
    const NewFile made(file_);
    EXPECT_FALSE(made.error()) << made.error();
    Write(file_, "text");
    const NewFile again(file_);
    EXPECT_EQ(again.error(), std::errc::file_exists) << again.error();
  }
  EXPECT_EQ(Text(file_), "text");
  const NewFile nowhere(directory_.path() / "missing" / "file");
  EXPECT_EQ(nowhere.error(), std::errc::no_such_file_or_directory) << nowhere.error();
}

#ifdef _WIN32

TEST_F(FileSystemTest, WritesNoFileThatSomebodyHasOpen) {
  Write(file_, "text");
  {
    const std::ofstream writer(file_, std::ios::app);
    EXPECT_FALSE(TestWriting(file_));
  }
  {
    const std::ifstream reader(file_);
    EXPECT_FALSE(TestWriting(file_));
  }
  EXPECT_EQ(Text(file_), "text");
  EXPECT_TRUE(TestWriting(file_));
}

TEST_F(FileSystemTest, KeepsANewFileFromBeingWrittenByAnother) {
  {
    const NewFile made(file_);
    EXPECT_FALSE(TestWriting(file_));
  }
  EXPECT_TRUE(TestWriting(file_));
}

TEST(FileSystem, RaisesWhatItCannotRemove) {
  EXPECT_TRUE(TestWriting("NUL"));
  EXPECT_THAT(Raised([] { RemoveFile("NUL"); }), HasSubstr("remove"));
}

// Wine has an error for the one, Windows for the other.
TEST(FileSystem, RaisesAStatusThatCannotBeRead) {
  const std::string tooLong(70000, 'a');
  const std::vector<std::string> raised = {Raised([] { IsDirectory(R"(\\.\pipe\none)"); }),
                                           Raised([&] { IsDirectory(FullFolderPath(tooLong)); })};
  EXPECT_THAT(raised, ::testing::Contains(HasSubstr("status")));
}

TEST_F(FileSystemTest, WorksAtAnyLengthAndBehindAMark) {
  const std::string deep = directory_ / (std::string(200, 'a') + "\\" + std::string(200, 'b'));
  for (const std::filesystem::path& folder :
       {FullFolderPath(deep), FullFolderPath(R"(\\?\)" + (directory_ / "marked\\inner"))}) {
    EXPECT_FALSE(IsDirectory(folder));
    EXPECT_TRUE(MakeDirectories(folder));
    EXPECT_TRUE(IsDirectory(folder));
    const std::filesystem::path file = folder.native() + L"\\file";
    EXPECT_TRUE(TestWriting(file));
    EXPECT_TRUE(RemoveFile(file));
  }
}

#endif

}  // namespace
}  // namespace brisolte
