#pragma once

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "support/pictures.h"

namespace brisolte::testing {

/// One encoder with the container it is recorded into.
struct RecordingCase {
  const char* encoder;
  const char* extension;
  const char* codec;
  Picture::Layout layout;
  ColourRule rule;
};

inline std::ostream& operator<<(std::ostream& stream, const RecordingCase& value) {
  return stream << value.encoder;
}

inline const std::vector<RecordingCase> kRecordingCases = {
    {"libx264", "mp4", "h264", Picture::Layout::kNv12, ColourRule::kBt709Limited},
    {"libx265", "mp4", "hevc", Picture::Layout::kNv12, ColourRule::kBt709Limited},
    {"mpeg4", "mp4", "mpeg4", Picture::Layout::kNv12, ColourRule::kBt709Limited},
    {"libvpx", "webm", "vp8", Picture::Layout::kNv12, ColourRule::kBt709Limited},
    {"libvpx-vp9", "webm", "vp9", Picture::Layout::kNv12, ColourRule::kBt709Limited},
    {"prores_ks", "mov", "prores", Picture::Layout::kBgra, ColourRule::kBt709Limited},
    {"prores", "mov", "prores", Picture::Layout::kBgra, ColourRule::kBt709Limited},
    {"mjpeg", "avi", "mjpeg", Picture::Layout::kBgra, ColourRule::kBt601Full},
};

inline std::string NameOfCase(const ::testing::TestParamInfo<RecordingCase>& instance) {
  std::string name = instance.param.encoder;
  std::erase_if(name, [](char c) { return c == '-' || c == '_'; });
  return name;
}

}  // namespace brisolte::testing
