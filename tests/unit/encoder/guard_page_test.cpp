// Pictures whose memory ends with a page that nobody may touch.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>

#include "encoder/ffmpeg/bgra_scaler.h"
#include "encoder/ffmpeg/ffmpeg_encoder.h"
#include "support/captured_log.h"
#include "support/temporary_directory.h"

namespace brisolte {
namespace {

using testing::CapturedLog;
using testing::TemporaryDirectory;

/// Memory that ends right before a page without any access.
class GuardedMemory {
 public:
  explicit GuardedMemory(std::size_t size) : size_(size) {
    const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    accessible_ = (size + page - 1) / page * page;
    whole_ = accessible_ + page;
    void* const memory = mmap(nullptr, whole_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    EXPECT_NE(memory, MAP_FAILED);
    start_ = static_cast<std::uint8_t*>(memory);
    EXPECT_EQ(mprotect(start_ + accessible_, page, PROT_NONE), 0);
    std::memset(start_, 100, accessible_);
  }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;
  ~GuardedMemory() { munmap(start_, whole_); }

  const std::uint8_t* data() const { return start_ + accessible_ - size_; }

 private:
  std::size_t size_;
  std::size_t accessible_ = 0;
  std::size_t whole_ = 0;
  std::uint8_t* start_ = nullptr;
};

/// A frame of rows `pitch` apart, the last of which ends right after its bytes.
VideoFrame FrameOf(const GuardedMemory& memory, std::uint32_t pitch) {
  VideoFrame frame;
  frame.pixels = {memory.data(), pitch, 0};
  frame.mapped = true;
  return frame;
}

/// Encodes one NV12 picture; whether the encoder takes the size at all is its own matter.
bool EncodeNv12(const char* encoderName, std::uint32_t width, std::uint32_t height, std::uint32_t pitch) {
  const TemporaryDirectory directory;
  CaptureSettings settings;
  settings.encoderName = encoderName;
  settings.outputFilePath = directory / "file.mp4";
  FFmpegEncoder encoder(settings);
  if (!encoder.InitializeVideoEncoder(width, height, nullptr)) {
    return false;
  }
  EXPECT_TRUE(encoder.GetPixelFormat());
  EXPECT_TRUE(encoder.Start());
  const std::uint32_t even = height - height % 2;
  const GuardedMemory memory(std::size_t{pitch} * (even + even / 2 - 1) + width);
  encoder.ProcessFrameAsync(FrameOf(memory, pitch));
  return encoder.Stop();
}

TEST(GuardedPicture, OfNv12IsReadToItsEndAndNoFurther) {
  const CapturedLog log;
  int encoded = 0;
  for (const char* const encoder : {"libx264", "mpeg4", "libx265"}) {
    for (const std::uint32_t width : {16U, 33U, 47U, 64U, 101U}) {
      for (const std::uint32_t height : {16U, 17U, 50U, 64U}) {
        encoded += EncodeNv12(encoder, width, height, width) ? 1 : 0;
        encoded += EncodeNv12(encoder, width, height, width + 3) ? 1 : 0;
      }
    }
  }
  EXPECT_GT(encoded, 40);
}

TEST(GuardedPicture, OfBgraIsReadToItsEndAndNoFurther) {
  for (const AVPixelFormat format :
       {AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUV422P10, AV_PIX_FMT_YUV444P, AV_PIX_FMT_BGR0, AV_PIX_FMT_GBRP}) {
    for (int width = 1; width < 80; ++width) {
      for (const int height : {2, 3, 16, 17}) {
        const FramePtr frame(av_frame_alloc());
        frame->format = format;
        frame->width = width;
        frame->height = height - height % 2;
        ASSERT_EQ(av_frame_get_buffer(frame.get(), 32), 0);
        for (const int padding : {0, 12}) {
          const int pitch = 4 * width + padding;
          const GuardedMemory memory(static_cast<std::size_t>(pitch * (height - 1) + 4 * width));
          BgraScaler scaler({width, height}, {frame->width, frame->height}, format);
          ASSERT_TRUE(scaler.usable());
          EXPECT_TRUE(scaler.Convert(FrameOf(memory, static_cast<std::uint32_t>(pitch)).pixels, *frame));
        }
      }
    }
  }
}

TEST(GuardedPicture, ThatIsMadeSmallerIsReadToItsEndAndNoFurther) {
  for (const AVPixelFormat format : {AV_PIX_FMT_NV12, AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUVJ422P}) {
    for (int width = 4; width < 200; width += 7) {
      for (const int height : {4, 33, 150}) {
        for (const auto& [targetWidth, targetHeight] :
             {std::pair(width / 2, height / 2), std::pair(width / 7, height / 7),
              std::pair(width - 1, height - 1)}) {
          const FramePtr frame(av_frame_alloc());
          frame->format = format;
          frame->width = std::max(targetWidth - targetWidth % 2, 2);
          frame->height = std::max(targetHeight - targetHeight % 2, 2);
          ASSERT_EQ(av_frame_get_buffer(frame.get(), 32), 0);
          const GuardedMemory memory(static_cast<std::size_t>(4 * width * height));
          BgraScaler scaler({width, height}, {frame->width, frame->height}, format);
          ASSERT_TRUE(scaler.usable());
          EXPECT_TRUE(scaler.Convert(FrameOf(memory, static_cast<std::uint32_t>(4 * width)).pixels, *frame));
        }
      }
    }
  }
}

}  // namespace
}  // namespace brisolte
