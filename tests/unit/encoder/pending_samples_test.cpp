#include "encoder/ffmpeg/pending_samples.h"

#include <gmock/gmock.h>

#include <numeric>

#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

// 48 kHz stereo in 32-bit floating point: 8 bytes a sample, 8192 a chunk.
constexpr std::size_t kBlockBytes = 8;

std::vector<std::uint8_t> Bytes(std::size_t count) {
  return std::vector<std::uint8_t>(count);
}

TEST(PendingSamples, HaveAChunkFromTheLastByteOn) {
  PendingSamples pending(kBlockBytes);
  EXPECT_FALSE(pending.hasChunk());
  pending.Append(Bytes(8191));
  EXPECT_FALSE(pending.hasChunk());
  EXPECT_EQ(pending.samples(), 1023U);
  pending.Append(Bytes(1));
  EXPECT_TRUE(pending.hasChunk());
  EXPECT_EQ(pending.chunkBytes(), 8192U);
  EXPECT_THAT(pending.Take(), SizeIs(8192));
  EXPECT_FALSE(pending.hasChunk());
  EXPECT_EQ(pending.bytes(), 0U);
}

TEST(PendingSamples, LeaveInTheOrderTheyCame) {
  std::vector<std::uint8_t> numbers(3000);
  std::iota(numbers.begin(), numbers.end(), std::uint8_t{0});
  PendingSamples pending(1);
  std::vector<std::uint8_t> taken;
  const auto take = [&] {
    const auto chunk = pending.Take();
    taken.insert(taken.end(), chunk.begin(), chunk.end());
  };
  pending.Append(std::span(numbers).first(2500));
  take();
  pending.Append(std::span(numbers).subspan(2500));
  take();
  take();
  EXPECT_EQ(taken, numbers);
  EXPECT_THAT(pending.Take(), IsEmpty());
}

TEST(PendingSamples, KeepABrokenSampleForMoreOfIt) {
  PendingSamples pending(kBlockBytes);
  pending.Append(Bytes(20));
  EXPECT_THAT(pending.Take(), SizeIs(16));
  EXPECT_EQ(pending.bytes(), 4U);
  EXPECT_EQ(pending.samples(), 0U);
  pending.Append(Bytes(4));
  EXPECT_EQ(pending.samples(), 1U);
}

TEST(PendingSamples, ReportMoreThanTwoChunksWithABrokenOneAndKeepThem) {
  const CapturedLog log;
  PendingSamples pending(kBlockBytes);
  pending.Append(Bytes(16'384));
  pending.ReportBacklog("microphone");
  EXPECT_THAT(log.lines(), IsEmpty());
  pending.Append(Bytes(8));
  pending.ReportBacklog("microphone");
  pending.Append(Bytes(3));
  pending.ReportBacklog("speaker");
  EXPECT_EQ(pending.bytes(), 16'395U);
  pending.Append(Bytes(8192 - 11));
  pending.ReportBacklog("speaker");
  EXPECT_THAT(log.lines(),
              ElementsAre("[INFO] Adjusting microphone buffer - discarding 8 bytes (keeping 16384 bytes)",
                          "[INFO] Adjusting speaker buffer - discarding 11 bytes (keeping 16384 bytes)"));
  EXPECT_EQ(pending.bytes(), 24'576U);
}

TEST(PendingSamples, DoNotReportABrokenChunkBehindOne) {
  const CapturedLog log;
  PendingSamples pending(kBlockBytes);
  pending.Append(Bytes(16'383));
  pending.ReportBacklog("microphone");
  EXPECT_THAT(log.lines(), IsEmpty());
}

}  // namespace
}  // namespace brisolte
