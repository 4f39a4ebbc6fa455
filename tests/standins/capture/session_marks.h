#pragma once

#include <atomic>

#include "capture/canvas.h"

namespace brisolte::standins {

/// What the service draws that is not the target's: the pointer, and the border around what is captured.
///
/// Only when it is told to by lines `DrawCursor 1` and `DrawBorder 1` among the faults as a session starts:
/// tests compare the pictures of windows to the pixel, and the real pointer lies where a person left it.
class SessionMarks {
 public:
  std::atomic<bool> cursor{true};
  std::atomic<bool> border{true};

  /// Looks for the lines.
  void Arm();
  /// A magenta pointer in the middle of the picture, a yellow border along its edges.
  void DrawOn(Canvas& canvas) const;

 private:
  bool drawsCursor_ = false;
  bool drawsBorder_ = false;
};

}  // namespace brisolte::standins
