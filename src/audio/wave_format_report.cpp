#include "audio/wave_format_report.h"

namespace brisolte {

std::string WaveFormatReport(std::string_view label, const WaveFormat* format) {
  if (format == nullptr) {
    return "format is null";
  }
  return std::string(label) + " audio format: Format Tag: " + std::to_string(format->formatTag) +
         ", Channels: " + std::to_string(format->channels) +
         ", Sample Rate: " + std::to_string(format->sampleRate) +
         ", Bits Per Sample: " + std::to_string(format->bitsPerSample) +
         ", Block Align: " + std::to_string(format->blockAlign) +
         ", Avg Bytes Per Sec: " + std::to_string(format->averageBytesPerSecond) +
         ", Extra Size: " + std::to_string(format->extraSize);
}

}  // namespace brisolte
