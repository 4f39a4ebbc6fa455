#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "encoder/ffmpeg/ffmpeg_types.h"
#include "support/pictures.h"

namespace brisolte::testing {

/// One picture of a file, with the time at which it is shown.
struct DecodedFrame {
  FramePtr frame;
  double seconds = 0;

  /// The colour at a place, in 8-bit steps whatever the depth.
  Yuv At(int x, int y) const;
};

/// The video of a file, decoded whole.
struct DecodedVideo {
  std::string codec;
  std::string tag;             ///< the four letters that name the codec in the file
  int configurationBytes = 0;  ///< what the file tells decoders before the first picture
  int width = 0;
  int height = 0;
  AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
  AVColorSpace space = AVCOL_SPC_UNSPECIFIED;
  AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
  AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
  std::string handlerName;
  std::string language;
  unsigned streams = 0;
  double seconds = 0;                 ///< how long it lasts, as the container says of it or of the whole file
  std::vector<double> packetSeconds;  ///< presentation times in the file's order
  std::vector<double> keyFrameSeconds;  ///< those of them that start a decodable run
  std::vector<DecodedFrame> frames;
};

/// Reads the only video stream of a file (UTF-8 path). Raises std::runtime_error saying what is wrong with
/// the file.
DecodedVideo ReadVideo(const std::string& path);

/// The picture that is shown at a time of the file, found as players find it: by seeking to the key frame
/// before. Raises as `ReadVideo` does.
DecodedFrame SeekPicture(const std::string& path, double seconds);

}  // namespace brisolte::testing
