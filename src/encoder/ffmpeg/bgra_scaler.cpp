#include "encoder/ffmpeg/bgra_scaler.h"

#include <algorithm>
#include <array>

#include "encoder/ffmpeg/pixel_formats.h"
#include "encoder/ffmpeg/planes.h"

namespace brisolte {
namespace {

/// The scaler reads rows in steps of its vector registers and so past a row's end; less than this.
constexpr int kOverread = 256;

/// The rows at the end of a picture whose overreading would leave it.
int RowsWithinOverread(int stride, int height) {
  return std::min((kOverread - 1) / stride + 1, height);
}

/// Where a picture is made smaller, each pixel has to be of all that it stands for, or thin lines and letters
/// come and go. A last row that is too much is not worth that time.
int MethodFor(PictureSize source, PictureSize target) {
  const bool keepsSize = target.width == source.width && target.height >= source.height - 1;
  return keepsSize ? SWS_FAST_BILINEAR : SWS_BICUBIC;
}

void SetColours(SwsContext& scaler, AVPixelFormat format) {
  constexpr int kFullRange = 1;
  constexpr int kUnchanged = 1 << 16;
  // The scaler's own choice is BT.601 and would not be what the stream is labelled with. Decoders of
  // full-range formats, which are those of JPEG pictures, do assume BT.601. It refuses for formats without
  // luma, which need no matrix.
  const bool fullRange = IsFullRangeFormat(format);
  const int* const matrix = sws_getCoefficients(fullRange ? SWS_CS_ITU601 : SWS_CS_ITU709);
  sws_setColorspaceDetails(&scaler, matrix, kFullRange, matrix, fullRange ? kFullRange : 0, 0, kUnchanged,
                           kUnchanged);
}

}  // namespace

BgraScaler::BgraScaler(PictureSize source, PictureSize target, AVPixelFormat format)
    : source_(source),
      scaler_(sws_getContext(source.width, source.height, AV_PIX_FMT_BGRA, target.width, target.height,
                             format, MethodFor(source, target), nullptr, nullptr, nullptr)) {
  if (scaler_) {
    SetColours(*scaler_, format);
  }
}

int BgraScaler::ConvertRows(const std::uint8_t* data, int stride, int firstRow, int rows, AVFrame& frame) {
  const std::array<const std::uint8_t*, 4> planes{data};
  const std::array<int, 4> strides{stride};
  return sws_scale(scaler_.get(), planes.data(), strides.data(), firstRow, rows, frame.data, frame.linesize);
}

bool BgraScaler::Convert(const MappedPixels& pixels, AVFrame& frame) {
  const int stride = static_cast<int>(pixels.rowPitch);
  const int tail = RowsWithinOverread(stride, source_.height);
  const int head = source_.height - tail;
  const int writtenFromHead = head > 0 ? ConvertRows(pixels.data, stride, 0, head, frame) : 0;
  if (writtenFromHead < 0) {
    return false;
  }
  const auto tailRows = static_cast<std::size_t>(tail);
  lastRows_.resize(rowBytes() * tailRows + kOverread);
  CopyPlane({pixels.data + static_cast<std::size_t>(head) * pixels.rowPitch, pixels.rowPitch},
            {lastRows_.data(), rowBytes()}, rowBytes(), tailRows);
  const int writtenFromTail = ConvertRows(lastRows_.data(), static_cast<int>(rowBytes()), head, tail, frame);
  return writtenFromTail >= 0 && writtenFromHead + writtenFromTail > 0;
}

}  // namespace brisolte
