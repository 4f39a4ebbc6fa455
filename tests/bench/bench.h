#pragma once

#include <string>
#include <vector>

namespace brisolte::bench {

/// Arguments of one measurement.
using Words = std::vector<std::string>;

/// One measurement's figures, printed as one JSON object.
class Figures {
 public:
  void Add(const std::string& name, double value);
  std::string Json() const { return "{" + text_ + "}"; }

 private:
  std::string text_;
};

/// ours|bare nv12|yuv420p|bgra ENCODER WIDTH HEIGHT FRAMES FILE: CPU time of encoding moving pictures into a
/// file; with "ours" also the time outside the codec and the allocations of each frame.
Figures MeasureEncoding(const Words& words);

/// nv12|bgra WIDTH HEIGHT FILE: writes the film as raw video, for another program.
Figures WritePictures(const Words& words);

/// WIDTH HEIGHT: the copies of a frame's planes against memcpy of as many bytes.
Figures MeasureCopies(const Words& words);

/// COUNT PRODUCERS: packets through the writer's queue.
Figures MeasurePackets(const Words& words);

/// SECONDS FILE: two stereo sounds of 48 kHz.
Figures MeasureSounds(const Words& words);

/// MINUTES FILE: a long recording of small pictures, as fast as it can be fed.
Figures MeasureGrowth(const Words& words);

}  // namespace brisolte::bench
