#include <atomic>
#include <stdexcept>
#include <thread>

#include "bench.h"
#include "encoder/ffmpeg/packet_writer.h"
#include "resources.h"

namespace brisolte::bench {
namespace {

constexpr int kPacketBytes = 4096;

void Produce(PacketWriter& writer, const AVPacket& packet, int stream, int count) {
  for (int i = 0; i < count; ++i) {
    writer.EnqueuePacket(&packet, stream, stream == 0);
  }
}

}  // namespace

Figures MeasurePackets(const Words& words) {
  const int count = std::stoi(words.at(0));
  const int producers = std::stoi(words.at(1));
  const PacketPtr packet(av_packet_alloc());
  if (!packet || av_new_packet(packet.get(), kPacketBytes) < 0) {
    throw std::runtime_error("no packet");
  }
  std::atomic<int> written = 0;
  PacketWriter writer;
  const double memory = ResidentMiB();
  writer.Start(
      [&written](AVPacket&) {
        ++written;
        return 0;
      },
      [] {});
  const double cpu = CpuSeconds();
  const double start = WallSeconds();
  std::vector<std::jthread> threads;
  threads.reserve(static_cast<std::size_t>(producers));
  for (int stream = 0; stream < producers; ++stream) {
    threads.emplace_back([&, stream] { Produce(writer, *packet, stream, count / producers); });
  }
  threads.clear();
  const double queued = WallSeconds();
  writer.Stop();
  Figures figures;
  figures.Add("enqueueMicroseconds", 1e6 * (queued - start) * producers / count);
  figures.Add("cpuMicroseconds", 1e6 * (CpuSeconds() - cpu) / count);
  figures.Add("peakMiB", PeakMiB() - memory);
  figures.Add("written", written);
  return figures;
}

}  // namespace brisolte::bench
