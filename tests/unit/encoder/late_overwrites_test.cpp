#include "encoder/ffmpeg/late_overwrites.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <string>
#include <string_view>

#include "common/text.h"
#include "encoder/ffmpeg/output_file.h"
#include "support/temporary_directory.h"

namespace brisolte {
namespace {

using testing::TemporaryDirectory;

class LateOverwritesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(format_);
    Write("0123456789");
  }

  void Write(std::string_view text) {
    avio_write(format_->pb, reinterpret_cast<const unsigned char*>(text.data()),
               static_cast<int>(text.size()));
  }

  /// What is on the disk.
  std::string Content() const {
    std::ifstream file(PathFromUtf8(path_), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  TemporaryDirectory directory_;
  const std::string path_ = directory_ / "file.mp4";
  FormatContextPtr format_ = CreateFormatContext(path_);
};

TEST_F(LateOverwritesTest, LeaveWhatWasThereUntilTheRestIsWritten) {
  {
    LateOverwrites overwrites(*format_);
    Write("more");
    avio_seek(format_->pb, 2, SEEK_SET);
    Write("two");
    avio_seek(format_->pb, 8, SEEK_SET);
    Write("89");
    avio_seek(format_->pb, 14, SEEK_SET);
    Write("end");
    EXPECT_EQ(overwrites.Flush(), 0);
    EXPECT_EQ(Content(), "0123456789moreend");
    EXPECT_EQ(overwrites.Apply(), 0);
    EXPECT_EQ(Content(), "01two56789moreend");
  }
  avio_seek(format_->pb, 17, SEEK_SET);
  Write("!");
  avio_flush(format_->pb);
  EXPECT_EQ(Content(), "01two56789moreend!");
}

TEST_F(LateOverwritesTest, AreForgottenWhenTheyAreNotApplied) {
  {
    LateOverwrites overwrites(*format_);
    avio_seek(format_->pb, 0, SEEK_SET);
    Write("gone");
    EXPECT_EQ(overwrites.Flush(), 0);
  }
  avio_flush(format_->pb);
  EXPECT_EQ(Content(), "0123456789");
}

TEST_F(LateOverwritesTest, TellThePlaceAndTheSizeOfTheFile) {
  LateOverwrites overwrites(*format_);
  EXPECT_EQ(avio_tell(format_->pb), 10);
  Write("more");
  EXPECT_EQ(avio_tell(format_->pb), 14);
  EXPECT_EQ(overwrites.Flush(), 0);
  EXPECT_EQ(avio_size(format_->pb), 14);
}

}  // namespace
}  // namespace brisolte
