#pragma once

#include <windows.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <type_traits>

#include "options.h"
#include "picture.h"
#include "status_file.h"

namespace brisolte {

struct GdiObjectDeleter {
  void operator()(HGDIOBJ object) const { DeleteObject(object); }
};
struct DeviceContextDeleter {
  void operator()(HDC context) const { DeleteDC(context); }
};

/// A window that shows the known picture, painted whole off the screen and then copied in one step.
class PatternWindow {
 public:
  /// Creates the window, shows it and paints picture 0. Throws std::runtime_error when Windows refuses.
  explicit PatternWindow(const PatternOptions& options);
  PatternWindow(const PatternWindow&) = delete;
  PatternWindow& operator=(const PatternWindow&) = delete;
  PatternWindow(PatternWindow&&) = delete;
  PatternWindow& operator=(PatternWindow&&) = delete;
  ~PatternWindow();

  /// Paints at the asked rate and obeys commands until the window is closed or its time is over.
  void Run();

 private:
  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
  LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
  void MakeCanvas(int width, int height);
  void PaintNext();
  void Show(HDC target, int firstRow, int endRow) const;
  void ObeyNewCommands();
  void Obey(const std::string& command);
  void SetClientSize(int width, int height) const;
  void WriteReady() const;
  static void WaitUntil(std::chrono::steady_clock::time_point due);
  static void PumpMessages();

  PatternOptions options_;
  HWND window_ = nullptr;
  Picture picture_;
  int width_ = 0;
  int height_ = 0;
  std::unique_ptr<std::remove_pointer_t<HBITMAP>, GdiObjectDeleter>
      bitmap_;  // outlives the context that it is selected into
  std::unique_ptr<std::remove_pointer_t<HDC>, DeviceContextDeleter> canvas_;
  std::span<std::uint32_t> pixels_;
  std::uint32_t number_ = 0;
  int commands_ = 0;
  bool paused_ = false;
  bool failed_ = false;
  ProgressFile progress_;
  CommandFile control_;
};

}  // namespace brisolte
