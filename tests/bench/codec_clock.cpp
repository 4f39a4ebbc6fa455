// Stands between the encoder and the codec: the linker leads calls of NAME to __wrap_NAME, and __real_NAME is
// the codec's.

#include "codec_clock.h"

#include "encoder/ffmpeg/ffmpeg.h"
#include "resources.h"

namespace {

thread_local double seconds = 0;

template <typename Call>
int Timed(Call call) {
  const double start = brisolte::bench::WallSeconds();
  const int result = call();
  seconds += brisolte::bench::WallSeconds() - start;
  return result;
}

}  // namespace

// The linker gives these names.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

int __real_avcodec_send_frame(AVCodecContext* context, const AVFrame* frame);
int __real_avcodec_receive_packet(AVCodecContext* context, AVPacket* packet);

int __wrap_avcodec_send_frame(AVCodecContext* context, const AVFrame* frame) {
  return Timed([&] { return __real_avcodec_send_frame(context, frame); });
}

int __wrap_avcodec_receive_packet(AVCodecContext* context, AVPacket* packet) {
  return Timed([&] { return __real_avcodec_receive_packet(context, packet); });
}
}
// NOLINTEND(bugprone-reserved-identifier)

double brisolte::bench::CodecSeconds() {
  return seconds;
}
