#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace brisolte::testing {

/// A real top-level window of plain content, without a frame so that its size is exactly what was asked for.
class TestWindow {
 public:
  static constexpr const wchar_t* kClassName = L"BrisolteTestWindow";

  TestWindow(const std::wstring& title, const RECT& place, DWORD style = WS_POPUP | WS_VISIBLE) {
    WNDCLASSW description{};
    description.lpfnWndProc = DefWindowProcW;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = kClassName;
    description.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
    RegisterClassW(&description);  // Fails from the second window on, which then uses the class of the first.
    handle_ =
        CreateWindowExW(0, kClassName, title.c_str(), style, place.left, place.top, place.right - place.left,
                        place.bottom - place.top, nullptr, nullptr, description.hInstance, nullptr);
  }
  TestWindow(const TestWindow&) = delete;
  TestWindow& operator=(const TestWindow&) = delete;
  ~TestWindow() { DestroyWindow(handle_); }

  HWND handle() const { return handle_; }
  std::int64_t number() const { return reinterpret_cast<std::intptr_t>(handle_); }

 private:
  HWND handle_ = nullptr;
};

}  // namespace brisolte::testing
