#include "encoder/ffmpeg/ffmpeg_types.h"

#include <array>

namespace brisolte {

std::string ErrorText(int code) {
  std::array<char, 64> text{};
  av_strerror(code, text.data(), text.size());
  return text.data();
}

}  // namespace brisolte
