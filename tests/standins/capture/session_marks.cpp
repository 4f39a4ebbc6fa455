#include "capture/session_marks.h"

#include "shared/faults.h"

namespace brisolte::standins {

namespace {

constexpr std::uint32_t kCursorColour = 0xFF00FF;
constexpr std::uint32_t kBorderColour = 0xFFFF00;
constexpr LONG kCursorReach = 12;
constexpr LONG kBorderWidth = 6;

void DrawCursor(Canvas& canvas) {
  const LONG x = canvas.content().Width / 2;
  const LONG y = canvas.content().Height / 2;
  canvas.Fill({x - kCursorReach, y - kCursorReach, x + kCursorReach, y + kCursorReach}, kCursorColour);
}

void DrawBorder(Canvas& canvas) {
  const auto [width, height] = canvas.content();
  canvas.Fill({0, 0, width, kBorderWidth}, kBorderColour);
  canvas.Fill({0, height - kBorderWidth, width, height}, kBorderColour);
  canvas.Fill({0, 0, kBorderWidth, height}, kBorderColour);
  canvas.Fill({width - kBorderWidth, 0, width, height}, kBorderColour);
}

}  // namespace

void SessionMarks::Arm() {
  drawsCursor_ = TakeFault("DrawCursor").has_value();
  drawsBorder_ = TakeFault("DrawBorder").has_value();
}

void SessionMarks::DrawOn(Canvas& canvas) const {
  if (drawsBorder_ && border) {
    DrawBorder(canvas);
  }
  if (drawsCursor_ && cursor) {
    DrawCursor(canvas);
  }
}

}  // namespace brisolte::standins
