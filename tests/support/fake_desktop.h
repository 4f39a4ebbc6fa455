#pragma once

#include <deque>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "desktop/desktop.h"

namespace brisolte::testing {

/// A desktop with answers that a test may change.
class FakeDesktop : public Desktop {
 public:
  /// `note` is told of every call that names a place or a window.
  explicit FakeDesktop(std::function<void(std::string)> note = [](const std::string&) {})
      : note_(std::move(note)) {}

  std::vector<MonitorEntry> monitors{{0, "first", 11, {0, 0, 1920, 1080}, true}};
  std::vector<WindowEntry> windows;
  std::int64_t nearestMonitor = 11;
  bool isWindow = true;
  std::deque<bool> windowVisible{true};  // answers in turn; the last one stays
  std::deque<bool> windowIconic{false};
  std::optional<Rectangle> windowRect{{0, 0, 100, 100}};
  std::optional<Rectangle> visibleRect{{0, 0, 100, 100}};

  std::vector<MonitorEntry> Monitors() override {
    note_("Monitors");
    return monitors;
  }
  std::vector<WindowEntry> Windows() override { return windows; }
  std::int64_t MonitorFromPoint(PixelPoint point) override {
    note_("MonitorFromPoint " + std::to_string(point.x) + "," + std::to_string(point.y));
    return nearestMonitor;
  }
  std::int64_t MonitorFromRect(const Rectangle& rect) override {
    note_("MonitorFromRect " + std::to_string(rect.left) + " " + std::to_string(rect.top) + " " +
          std::to_string(rect.right) + " " + std::to_string(rect.bottom));
    return nearestMonitor;
  }
  bool IsWindow(std::int64_t window) override {
    Note("IsWindow", window);
    return isWindow;
  }
  bool IsWindowVisible(std::int64_t window) override {
    Note("IsWindowVisible", window);
    return Next(windowVisible);
  }
  bool IsIconic(std::int64_t window) override {
    Note("IsIconic", window);
    return Next(windowIconic);
  }
  std::optional<Rectangle> WindowRect(std::int64_t window) override {
    Note("WindowRect", window);
    return windowRect;
  }
  std::optional<Rectangle> VisibleRect(std::int64_t window) override {
    Note("VisibleRect", window);
    return visibleRect;
  }
  void RestoreWindow(std::int64_t window) override { Note("RestoreWindow", window); }
  void BringWindowToTop(std::int64_t window) override { Note("BringWindowToTop", window); }
  void UpdateWindow(std::int64_t window) override { Note("UpdateWindow", window); }
  void Sleep(std::int32_t milliseconds) override { Note("Sleep", milliseconds); }

 private:
  static bool Next(std::deque<bool>& answers) {
    const bool answer = answers.front();
    if (answers.size() > 1) {
      answers.pop_front();
    }
    return answer;
  }

  void Note(const char* call, std::int64_t number) {
    note_(std::string(call) + " " + std::to_string(number));
  }

  std::function<void(std::string)> note_;
};

}  // namespace brisolte::testing
