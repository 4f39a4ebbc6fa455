#include "encoder/ffmpeg/output_file.h"

#include <gmock/gmock.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "common/text.h"
#include "encoder/ffmpeg/space_budget.h"
#include "support/captured_log.h"
#include "support/temporary_directory.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;
using testing::TemporaryDirectory;

void WriteSomething(const std::string& path) {
  std::ofstream(PathFromUtf8(path)) << "something";
}
bool Exists(const std::string& path) {
  return std::filesystem::exists(PathFromUtf8(path));
}

/// The directory part as the log shows it.
std::string Parent(const std::string& path) {
  return path.substr(0, path.find_last_of("\\/"));
}

TEST(PrepareOutputFile, MakesAllMissingDirectories) {
  const TemporaryDirectory directory;
  const std::string path = directory / "a/b/c/file.mp4";
  const CapturedLog log;
  EXPECT_TRUE(PrepareOutputFile(path));
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] Creating output directory: " + Parent(path),
                                       "[INFO] Output directory created successfully",
                                       "[INFO] Existing output file removed"));
  EXPECT_TRUE(Exists(directory / "a/b/c"));
  EXPECT_FALSE(Exists(path));
}

TEST(PrepareOutputFile, RemovesWhatWasThere) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file.mp4";
  WriteSomething(path);
  const CapturedLog log;
  EXPECT_TRUE(PrepareOutputFile(path));
  EXPECT_THAT(log.lines(),
              ElementsAre("[INFO] Creating output directory: " + Parent(path),
                          "[INFO] Output directory already exists", "[INFO] Existing output file removed"));
  EXPECT_FALSE(Exists(path));
}

TEST(PrepareOutputFile, TakesTheDirectoryBeforeTheLastRunOfSeparators) {
  const TemporaryDirectory directory;
  const std::string base = directory / "dir";
  const CapturedLog log;
  EXPECT_TRUE(PrepareOutputFile(base + "///file.mp4"));
  EXPECT_TRUE(log.has("[INFO] Creating output directory: " + base));
}

TEST(PrepareOutputFile, CountsBothSeparators) {
  const TemporaryDirectory directory;
  const std::string base = directory / "dir";
  const CapturedLog log;
  EXPECT_TRUE(PrepareOutputFile(base + "/\\file.mp4"));
  EXPECT_TRUE(log.has("[INFO] Creating output directory: " + base));
  EXPECT_TRUE(Exists(base));
}

TEST(PrepareOutputFile, WorksInAnyScript) {
  const TemporaryDirectory directory;
  const std::string path = directory / "\xC3\xBC\xE6\xBC\xA2/\xF0\x9F\x8E\xA5.mp4";
  EXPECT_TRUE(PrepareOutputFile(path));
  EXPECT_TRUE(Exists(Parent(path)));
}

TEST(PrepareOutputFile, FailsWhenADirectoryIsInItsPlace) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file.mp4";
  std::filesystem::create_directory(PathFromUtf8(path));
  const CapturedLog log;
  EXPECT_FALSE(PrepareOutputFile(path));
  EXPECT_TRUE(log.has("[ERROR] Cannot write to output file: " + path));
  EXPECT_TRUE(Exists(path));
}

TEST(PrepareOutputFile, FailsWhenTheDirectoryIsAFile) {
  const TemporaryDirectory directory;
  WriteSomething(directory / "file");
  const std::string path = directory / "file/out.mp4";
  const CapturedLog log;
  EXPECT_FALSE(PrepareOutputFile(path));
  EXPECT_TRUE(log.has("[INFO] Output directory already exists"));
  EXPECT_EQ(log.count("[ERROR] Cannot write to output file: " + path), 1);
}

TEST(PrepareOutputFile, RaisesWhenADirectoryCannotBeMade) {
  const TemporaryDirectory directory;
  WriteSomething(directory / "file");
  try {
    PrepareOutputFile(directory / "file/below/out.mp4");
    ADD_FAILURE() << "nothing raised";
  } catch (const std::filesystem::filesystem_error& error) {
    EXPECT_THAT(error.what(), HasSubstr("create_directories"));
  }
}

TEST(PrepareOutputFile, FailsForAnEmptyPath) {
  const CapturedLog log;
  EXPECT_FALSE(PrepareOutputFile(""));
  EXPECT_THAT(log.lines(), ElementsAre("[ERROR] Cannot write to output file: "));
}

#ifdef _WIN32

TEST(PrepareOutputFile, FailsInAReadOnlyDirectory) {
  const char* const directory = std::getenv("BRISOLTE_READ_ONLY_DIR");
  ASSERT_NE(directory, nullptr) << "the runner names a directory that nobody can write";
  const std::string path = std::string(directory) + "\\file.mp4";
  const CapturedLog log;
  EXPECT_FALSE(PrepareOutputFile(path));
  EXPECT_THAT(log.lines(), ElementsAre(std::string("[INFO] Creating output directory: ") + directory,
                                       "[INFO] Output directory already exists",
                                       "[ERROR] Cannot write to output file: " + path));
}

TEST(PrepareOutputFile, RaisesWhenTheFileCannotBeRemoved) {
  try {
    PrepareOutputFile("NUL");
    ADD_FAILURE() << "nothing raised";
  } catch (const std::filesystem::filesystem_error& error) {
    EXPECT_THAT(error.what(), HasSubstr("remove"));
  }
}

TEST(PrepareOutputFile, FailsWhileTheFileIsRecordedInto) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file.mp4";
  const FormatContextPtr format = CreateFormatContext(path);
  avio_write(format->pb, reinterpret_cast<const unsigned char*>("something"), 9);
  avio_flush(format->pb);
  EXPECT_FALSE(PrepareOutputFile(path));
  EXPECT_EQ(std::filesystem::file_size(PathFromUtf8(path)), 9U);
}

#endif

TEST(CreateFormatContext, TakesTheContainerFromTheExtension) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file.webm";
  const CapturedLog log;
  const FormatContextPtr format = CreateFormatContext(path);
  ASSERT_NE(format, nullptr);
  EXPECT_STREQ(format->oformat->name, "webm");
  EXPECT_TRUE(Exists(path));
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] FFmpegEncoder: Creating format context, output file: " + path,
                                       "[INFO] FFmpegEncoder: Format context created successfully"));
}

TEST(CreateFormatContext, FailsForAnUnknownExtension) {
  const TemporaryDirectory directory;
  const CapturedLog log;
  EXPECT_EQ(CreateFormatContext(directory / "file.unknown"), nullptr);
  EXPECT_EQ(log.lines().back(),
            "[ERROR] FFmpegEncoder: Unable to create FFMPEG output context: " + ErrorText(AVERROR(EINVAL)));
}

TEST(CreateFormatContext, FailsWhereNoFileCanBe) {
  const TemporaryDirectory directory;
  const CapturedLog log;
  EXPECT_EQ(CreateFormatContext(directory / "missing/file.mp4"), nullptr);
  EXPECT_EQ(log.lines().back(),
            "[ERROR] FFmpegEncoder: Unable to open output file: " + ErrorText(AVERROR(ENOENT)));
}

// Another recording may make the file after it was tested and removed.
TEST(CreateFormatContext, LeavesAFileThatIsThere) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file.mp4";
  WriteSomething(path);
  const CapturedLog log;
  EXPECT_EQ(CreateFormatContext(path), nullptr);
  EXPECT_EQ(log.lines().back(),
            "[ERROR] FFmpegEncoder: Unable to open output file: " + ErrorText(AVERROR(EEXIST)));
  EXPECT_EQ(std::filesystem::file_size(PathFromUtf8(path)), 9U);
}

TEST(CreateFormatContext, GivesTheMuxerAPathThatHoldsInEveryDirectory) {
  const std::filesystem::path before = std::filesystem::current_path();
  const TemporaryDirectory directory;
  std::filesystem::current_path(directory.path());
  const FormatContextPtr format = CreateFormatContext("file.mp4");
  std::filesystem::current_path(before);
  ASSERT_NE(format, nullptr);
  EXPECT_TRUE(PathFromUtf8(format->url).is_absolute());
  EXPECT_TRUE(std::filesystem::equivalent(PathFromUtf8(format->url), directory.path() / "file.mp4"));
}

TEST(OutputFile, SaysWhatItHasBeenPreparedFor) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file.mp4";
  const CapturedLog log;
  OutputFile file;
  EXPECT_FALSE(file.initialized());
  EXPECT_TRUE(file.Initialize(path));
  EXPECT_TRUE(file.initialized());
  EXPECT_EQ(log.lines().front(), "[INFO] FFmpegEncoder: Initialization with configuration: " + path);
  EXPECT_EQ(log.lines().back(), "[INFO] FFmpegEncoder: Initialization successful");
}

TEST(OutputFile, ReportsAnUnwritableTargetTwice) {
  const TemporaryDirectory directory;
  const std::string path = directory / "file.mp4";
  std::filesystem::create_directory(PathFromUtf8(path));
  const CapturedLog log;
  OutputFile file;
  EXPECT_FALSE(file.Initialize(path));
  EXPECT_FALSE(file.initialized());
  EXPECT_EQ(log.count("[ERROR] Cannot write to output file: " + path), 2);
}

TEST(OutputFile, ReportsAMissingContainer) {
  const TemporaryDirectory directory;
  const CapturedLog log;
  OutputFile file;
  EXPECT_FALSE(file.Initialize(directory / "file.unknown"));
  EXPECT_EQ(log.lines().back(), "[ERROR] FFmpegEncoder: Failed to create format context");
}

TEST(OutputFile, RefusesEverythingWithoutAContext) {
  const CapturedLog log;
  OutputFile file;
  EXPECT_EQ(file.AddStream(), nullptr);
  EXPECT_FALSE(file.WriteHeader());
  EXPECT_FALSE(file.Finalize());
  const PacketPtr packet(av_packet_alloc());
  EXPECT_LT(file.WritePacket(*packet), 0);
  file.Close();
  EXPECT_THAT(log.lines(),
              ElementsAre("[ERROR] FFmpegEncoder: Format context is null, cannot write file header",
                          "[ERROR] FFmpegEncoder: Not initialized or format context is null"));
}

TEST(OutputFile, TriesOneHeaderAndWritesNothingWithoutIt) {
  const TemporaryDirectory directory;
  OutputFile file;
  ASSERT_TRUE(file.Initialize(directory / "file.mp4"));
  const CapturedLog log;
  EXPECT_FALSE(file.WriteHeader());
  const PacketPtr packet(av_packet_alloc());
  EXPECT_LT(file.WritePacket(*packet), 0);
  EXPECT_EQ(file.AddStream(), nullptr);
  EXPECT_FALSE(file.WriteHeader());
  EXPECT_FALSE(file.Finalize());
  EXPECT_FALSE(file.Finalize());
  const std::string headerError =
      "[ERROR] FFmpegEncoder: Failed to write file header: " + ErrorText(AVERROR(EINVAL));
  EXPECT_THAT(log.lines(),
              ElementsAre("[INFO] FFmpegEncoder: Writing file header with 0 streams", headerError,
                          "[INFO] FFmpegEncoder: Writing file header with 0 streams", headerError,
                          "[ERROR] FFmpegEncoder: Failed to write trailer!!!!!",
                          "[ERROR] FFmpegEncoder: Failed to write trailer!!!!!"));
}

/// A packet that costs as much of an index as it can: of its own size and duration, shown later than decoded,
/// and a key frame only now and then, so that these are listed.
PacketPtr MakePacket(int stream, int number) {
  PacketPtr packet(av_packet_alloc());
  const int size = 50 + number % 3;
  EXPECT_EQ(av_new_packet(packet.get(), size), 0);
  std::memset(packet->data, 0, static_cast<std::size_t>(size));
  packet->stream_index = stream;
  packet->dts = number * 2000 + number * number % 97;
  packet->pts = packet->dts + number % 5 * 100;
  packet->flags = number % 3 == 0 ? AV_PKT_FLAG_KEY : 0;
  return packet;
}

/// The size of the index of an MP4 or MOV, 0 without one.
std::uint32_t IndexBytes(const std::string& path) {
  std::ifstream file(PathFromUtf8(path), std::ios::binary);
  const auto number = [&file] {
    std::uint32_t value = 0;
    for (int i = 0; i < 4; ++i) {
      value = value << 8 | static_cast<std::uint32_t>(file.get());
    }
    return value;
  };
  constexpr int kHeadBytes = 8;
  while (file) {
    const std::uint32_t size = number();
    if (number() == MKBETAG('m', 'o', 'o', 'v')) {
      return size;
    }
    file.seekg(static_cast<std::streamoff>(size) - kHeadBytes, std::ios::cur);
  }
  return 0;
}

TEST(OutputFile, HasNoLargerIndexThanIsKeptRoomFor) {
  constexpr int kPackets = 2000;
  const TemporaryDirectory directory;
  for (const char* const name : {"file.mp4", "file.mov"}) {
    SCOPED_TRACE(name);
    OutputFile file;
    ASSERT_TRUE(file.Initialize(directory / name));
    for (int i = 0; i < 2; ++i) {
      AVStream* const stream = file.AddStream();
      stream->time_base = {1, 60'000};
      stream->codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
      stream->codecpar->codec_id = AV_CODEC_ID_MPEG4;
      stream->codecpar->width = stream->codecpar->height = 64;
    }
    ASSERT_TRUE(file.WriteHeader());
    SpaceBudget budget;
    for (int i = 0; i < kPackets; ++i) {
      EXPECT_EQ(file.WritePacket(*MakePacket(i % 2, i / 2)), 0);
      EXPECT_TRUE(budget.Admit(0));
    }
    ASSERT_TRUE(file.Finalize());
    const std::uint32_t index = IndexBytes(directory / name);
    EXPECT_GT(index, 24U * kPackets);
    budget.Look(index);
    EXPECT_FALSE(budget.Admit(0));
  }
}

TEST(OutputFile, NamesTheKindsOfItsStreams) {
  const TemporaryDirectory directory;
  OutputFile file;
  ASSERT_TRUE(file.Initialize(directory / "file.mp4"));
  AVStream* const video = file.AddStream();
  video->codecpar->codec_type = AVMEDIA_TYPE_VIDEO;
  video->codecpar->codec_id = AV_CODEC_ID_H264;
  AVStream* const audio = file.AddStream();
  audio->codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
  audio->codecpar->codec_id = AV_CODEC_ID_MP3;
  ASSERT_NE(file.AddStream(), nullptr);
  const CapturedLog log;
  EXPECT_FALSE(file.WriteHeader());
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: Writing file header with 3 streams"));
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: Stream #0 is video codec_id: 27"));
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: Stream #1 is audio codec_id: 86017"));
  EXPECT_TRUE(log.has("[INFO] FFmpegEncoder: Stream #2 is unknown codec_id: 0"));
  EXPECT_THAT(log.lines().back(), StartsWith("[ERROR] FFmpegEncoder: Failed to write file header: "));
}

}  // namespace
}  // namespace brisolte
