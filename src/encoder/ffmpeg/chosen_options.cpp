#include "encoder/ffmpeg/chosen_options.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "common/logger.h"

namespace brisolte {
namespace {

/// Of FFmpeg's options for all video encoders. Others would contradict the recording (what its pictures are,
/// how they are labelled and timed, in which order they come), or end the process: with `me_range`, `qblur`,
/// `qcomp` and `qdiff` FFmpeg's own encoders leave their memory or fail an assertion.
constexpr std::array<std::string_view, 15> kOfAll{
    "bufsize", "compression_level", "g",       "global_quality", "keyint_min", "level",
    "maxrate", "minrate",           "profile", "qmax",           "qmin",       "refs",
    "slices",  "threads",           "trellis"};

/// Of encoders' own: names of files, a list for the library behind the encoder, which nothing here checks,
/// and limits that FFmpeg's rate control takes to be in their order.
constexpr std::array<std::string_view, 6> kNotOfOne{"lmax",        "lmin",  "load_plugins",
                                                    "passlogfile", "stats", "x264opts"};

template <typename Names>
bool IsAmong(const Names& names, const std::string& name) {
  return std::ranges::find(names, name) != names.end();
}

bool IsOfVideoEncoders(const AVOption& option) {
  constexpr int kWanted = AV_OPT_FLAG_ENCODING_PARAM | AV_OPT_FLAG_VIDEO_PARAM;
  constexpr int kUnwanted = AV_OPT_FLAG_READONLY | AV_OPT_FLAG_DEPRECATED;
  // Dictionaries are such lists.
  return option.type != AV_OPT_TYPE_CONST && option.type != AV_OPT_TYPE_DICT &&
         (option.flags & kWanted) == kWanted && (option.flags & kUnwanted) == 0;
}

/// The names in a table of FFmpeg's, which may be null.
std::vector<std::string> NamesIn(const AVClass* table) {
  std::vector<std::string> names;
  const AVOption* option = nullptr;
  while (table != nullptr && (option = av_opt_next(static_cast<const void*>(&table), option)) != nullptr) {
    if (IsOfVideoEncoders(*option)) {
      names.emplace_back(option->name);
    }
  }
  return names;
}

bool IsChoosable(const std::string& name, const AVCodec& codec) {
  const std::vector<std::string> choosable = ChoosableOptions(codec);
  if (IsAmong(choosable, name)) {
    return true;
  }
  std::string names;
  for (const std::string& each : choosable) {
    names += (names.empty() ? "" : ", ") + each;
  }
  Logger::Error("Encoder " + std::string(codec.name) + " has no option " + name +
                " to choose; there are: " + names);
  return false;
}

}  // namespace

std::vector<std::string> ChoosableOptions(const AVCodec& codec) {
  std::vector<std::string> names = NamesIn(codec.priv_class);
  // An encoder's own hide those of the same names that are for all.
  std::vector<std::string> others = NamesIn(avcodec_get_class());
  std::erase_if(others,
                [&](const std::string& name) { return !IsAmong(kOfAll, name) || IsAmong(names, name); });
  std::erase_if(names, [](const std::string& name) { return IsAmong(kNotOfOne, name); });
  names.insert(names.end(), others.begin(), others.end());
  return names;
}

bool AddChosenOptions(const std::vector<EncoderOption>& chosen, const AVCodec& codec,
                      OptionDictionary& options) {
  if (chosen.empty()) {
    return true;
  }
  // When it is opened, an encoder does not say which option was wrong.
  const CodecContextPtr trial(avcodec_alloc_context3(&codec));
  if (!trial) {
    Logger::Error("FFmpegEncoder: Failed to allocate codec context");
    return false;
  }
  for (const auto& [name, value] : chosen) {
    if (!IsChoosable(name, codec)) {
      return false;
    }
    if (const int result = av_opt_set(trial.get(), name.c_str(), value.c_str(), AV_OPT_SEARCH_CHILDREN);
        result < 0) {
      std::string failure = "Encoder " + std::string(codec.name);
      failure.append(" refuses ")
          .append(name)
          .append("=")
          .append(value)
          .append(": ")
          .append(ErrorText(result));
      Logger::Error(failure);
      return false;
    }
    options.Set(name.c_str(), value.c_str());
  }
  return true;
}

}  // namespace brisolte
