#pragma once

#include <windows.h>

#include <string>
#include <thread>

namespace brisolte::standins {

/// A real window of one colour, on a thread of its own.
class TestWindow {
 public:
  TestWindow(const RECT& place, COLORREF color, const wchar_t* title = L"Stand-in test");
  ~TestWindow();
  TestWindow(const TestWindow&) = delete;
  TestWindow& operator=(const TestWindow&) = delete;
  TestWindow(TestWindow&&) = delete;
  TestWindow& operator=(TestWindow&&) = delete;

  HWND handle() const { return window_; }
  void Fill(COLORREF color);
  void MoveTo(const RECT& place);
  void Destroy();

 private:
  HWND window_ = nullptr;
  std::jthread thread_;
};

/// The same in another process, the only way to have a window of somebody else.
class ForeignWindow {
 public:
  ForeignWindow(const RECT& place, COLORREF color);
  ~ForeignWindow();
  ForeignWindow(const ForeignWindow&) = delete;
  ForeignWindow& operator=(const ForeignWindow&) = delete;
  ForeignWindow(ForeignWindow&&) = delete;
  ForeignWindow& operator=(ForeignWindow&&) = delete;

  HWND handle() const { return window_; }

 private:
  HWND window_ = nullptr;
  PROCESS_INFORMATION process_{};
};

/// What the other process runs: shows the window that these words describe until it is ended.
int ShowForeignWindow(const std::wstring& words);

}  // namespace brisolte::standins
