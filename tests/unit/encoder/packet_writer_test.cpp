#include "encoder/ffmpeg/packet_writer.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <thread>
#include <utility>
#include <vector>

#include "support/captured_log.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

PacketPtr MakePacket(std::int64_t pts) {
  PacketPtr packet(av_packet_alloc());
  EXPECT_EQ(av_new_packet(packet.get(), 16), 0);
  packet->pts = pts;
  return packet;
}

/// A destination that notes what arrives, in order.
struct Written {
  std::vector<std::int64_t> times;
  std::vector<const std::uint8_t*> data;

  PacketWriter::WritePacket Writer() {
    return [this](AVPacket& packet) {
      times.push_back(packet.pts);
      data.push_back(packet.data);
      return 0;
    };
  }
};

TEST(PacketWriter, RefusesPacketsWhileStoppedAndMissingOnesAlways) {
  const CapturedLog log;
  Written written;
  PacketWriter writer;
  const PacketPtr packet = MakePacket(1);
  EXPECT_FALSE(writer.EnqueuePacket(packet.get(), 0, true));
  writer.Start(written.Writer(), [] {});
  EXPECT_TRUE(writer.running());
  EXPECT_FALSE(writer.EnqueuePacket(nullptr, 0, true));
  writer.Stop();
  EXPECT_FALSE(writer.running());
  EXPECT_FALSE(writer.EnqueuePacket(packet.get(), 0, true));
  EXPECT_THAT(written.times, IsEmpty());
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST(PacketWriter, HasWrittenEverythingInOrderWhenStopReturns) {
  Written written;
  PacketWriter writer;
  std::promise<void> blocked;
  std::promise<void> release;
  writer.Start(
      [&, first = true, write = written.Writer()](AVPacket& packet) mutable {
        if (std::exchange(first, false)) {
          blocked.set_value();
          release.get_future().wait();
        }
        return write(packet);
      },
      [] {});
  EXPECT_TRUE(writer.EnqueuePacket(MakePacket(1).get(), 0, true));
  blocked.get_future().wait();
  for (std::int64_t pts = 2; pts <= 5; ++pts) {
    EXPECT_TRUE(writer.EnqueuePacket(MakePacket(pts).get(), 0, true));
  }
  std::thread stopper([&] { writer.Stop(); });
  while (writer.running()) {
    std::this_thread::yield();
  }
  release.set_value();
  stopper.join();
  EXPECT_THAT(written.times, ElementsAre(1, 2, 3, 4, 5));
}

TEST(PacketWriter, SharesThePacketsDataAndLeavesThePacketToItsOwner) {
  Written written;
  PacketWriter writer;
  writer.Start(written.Writer(), [] {});
  const PacketPtr packet = MakePacket(7);
  const std::uint8_t* const data = packet->data;
  EXPECT_TRUE(writer.EnqueuePacket(packet.get(), 0, true));
  EXPECT_EQ(packet->data, data);
  av_packet_unref(packet.get());
  writer.Stop();
  EXPECT_THAT(written.data, ElementsAre(data));
}

TEST(PacketWriter, SaysWhichPacketsCouldNotBeWrittenAndGoesOn) {
  const CapturedLog log;
  PacketWriter writer;
  writer.Start([](AVPacket& packet) { return packet.pts == 2 ? 0 : AVERROR(EIO); }, [] {});
  EXPECT_TRUE(writer.EnqueuePacket(MakePacket(1).get(), 0, true));
  EXPECT_TRUE(writer.EnqueuePacket(MakePacket(2).get(), 0, true));
  EXPECT_TRUE(writer.EnqueuePacket(MakePacket(3).get(), 2, false));
  writer.Stop();
  EXPECT_THAT(log.lines(), ElementsAre("[INFO] FFmpegEncoder: write frame:  Stream: 0, Type: Video",
                                       "[INFO] FFmpegEncoder: write frame:  Stream: 2, Type: Audio"));
}

// A screen that stands still sends nothing that could push the last packet out.
TEST(PacketWriter, FlushesWhatWasWrittenThoughNothingFollows) {
  Written written;
  PacketWriter writer;
  std::promise<std::size_t> flushed;
  writer.Start(written.Writer(), [&] { flushed.set_value(written.times.size()); });
  EXPECT_TRUE(writer.EnqueuePacket(MakePacket(1).get(), 0, true));
  auto count = flushed.get_future();
  ASSERT_EQ(count.wait_for(std::chrono::seconds(30)), std::future_status::ready);
  EXPECT_EQ(count.get(), 1U);
}

TEST(PacketWriter, FlushesWhilePacketsKeepComing) {
  PacketWriter writer;
  std::atomic<int> written = 0;
  std::atomic<int> flushes = 0;
  writer.Start(
      [&](AVPacket&) {
        ++written;
        return 0;
      },
      [&] { ++flushes; });
  const PacketPtr packet = MakePacket(1);
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (flushes < 2 && std::chrono::steady_clock::now() < limit) {
    EXPECT_TRUE(writer.EnqueuePacket(packet.get(), 0, true));
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_EQ(flushes, 2);
  EXPECT_GT(written, 2 * flushes);
}

TEST(PacketWriter, CanBeStartedAgainAndIgnoresASecondStart) {
  Written first;
  Written second;
  PacketWriter writer;
  writer.Start(first.Writer(), [] {});
  writer.Start(second.Writer(), [] {});
  EXPECT_TRUE(writer.EnqueuePacket(MakePacket(1).get(), 0, true));
  writer.Stop();
  writer.Stop();
  writer.Start(second.Writer(), [] {});
  EXPECT_TRUE(writer.EnqueuePacket(MakePacket(2).get(), 0, true));
  writer.Stop();
  EXPECT_THAT(first.times, ElementsAre(1));
  EXPECT_THAT(second.times, ElementsAre(2));
}

// What was accepted is written, and each producer's packets keep their order, however the stop falls between
// them.
TEST(PacketWriter, WritesExactlyWhatItAccepted) {
  for (int round = 0; round < 20; ++round) {
    Written written;
    PacketWriter writer;
    writer.Start(written.Writer(), [] {});
    const auto produce = [&writer](std::int64_t base) {
      std::vector<std::int64_t> accepted;
      for (std::int64_t pts = base; pts < base + 200; ++pts) {
        if (writer.EnqueuePacket(MakePacket(pts).get(), 0, true)) {
          accepted.push_back(pts);
        }
      }
      return accepted;
    };
    auto one = std::async(std::launch::async, produce, 0);
    auto two = std::async(std::launch::async, produce, 1000);
    for (int i = 0; i < round * 20; ++i) {
      std::this_thread::yield();
    }
    writer.Stop();
    std::vector<std::int64_t> accepted = one.get();
    const auto more = two.get();
    accepted.insert(accepted.end(), more.begin(), more.end());
    std::vector<std::int64_t> sorted = written.times;
    std::ranges::stable_sort(sorted, {}, [](auto time) { return time / 1000; });
    EXPECT_EQ(sorted, accepted);
  }
}

}  // namespace
}  // namespace brisolte
