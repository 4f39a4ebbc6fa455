#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <future>
#include <string>
#include <thread>
#include <utility>

namespace brisolte::testing {

/// A real window in front of all others, without a frame, that a thread of its own keeps painted: red, green,
/// blue and white quarters, or one colour.
class PaintedWindow {
 public:
  explicit PaintedWindow(const RECT& place) {
    std::promise<HWND> made;
    auto handle = made.get_future();
    thread_ = std::jthread([this, place, made = std::move(made)]() mutable { Run(place, std::move(made)); });
    handle_ = handle.get();
  }
  PaintedWindow(const PaintedWindow&) = delete;
  PaintedWindow& operator=(const PaintedWindow&) = delete;
  ~PaintedWindow() { PostMessageW(handle_, WM_CLOSE, 0, 0); }

  std::int64_t number() const { return reinterpret_cast<std::intptr_t>(handle_); }

  void Paint(COLORREF colour) {
    colour_ = colour;
    RedrawWindow(handle_, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
  }

  void Resize(int width, int height) {
    SetWindowPos(handle_, nullptr, 0, 0, width, height, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    RedrawWindow(handle_, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
  }

  void Hide() { ShowWindow(handle_, SW_HIDE); }

 private:
  static constexpr COLORREF kQuarters = 0xFF000000;

  void Run(const RECT& place, std::promise<HWND> made) {
    WNDCLASSW description{};
    description.lpfnWndProc = OnMessage;
    description.hInstance = GetModuleHandleW(nullptr);
    description.lpszClassName = L"BrisoltePaintedWindow";
    RegisterClassW(&description);  // Fails from the second window on, which then uses the class of the first.
    HWND window = CreateWindowExW(WS_EX_TOPMOST, description.lpszClassName, L"painted", WS_POPUP, place.left,
                                  place.top, place.right - place.left, place.bottom - place.top, nullptr,
                                  nullptr, description.hInstance, nullptr);
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    ShowWindow(window, SW_SHOWNOACTIVATE);
    RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
    made.set_value(window);
    MSG message{};
    while (GetMessageW(&message, nullptr, 0, 0) > 0) {
      DispatchMessageW(&message);
    }
  }

  static LRESULT CALLBACK OnMessage(HWND window, UINT message, WPARAM word, LPARAM extra) {
    auto* self = reinterpret_cast<PaintedWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
    if (message == WM_PAINT && self != nullptr) {
      PAINTSTRUCT paint{};
      self->PaintOn(BeginPaint(window, &paint), window);
      EndPaint(window, &paint);
      return 0;
    }
    if (message == WM_DESTROY) {
      PostQuitMessage(0);
    }
    return DefWindowProcW(window, message, word, extra);
  }

  void PaintOn(HDC context, HWND window) const {
    RECT all{};
    GetClientRect(window, &all);
    const LONG x = all.right / 2;
    const LONG y = all.bottom / 2;
    const COLORREF colour = colour_;
    const bool quarters = colour == kQuarters;
    Fill(context, {0, 0, x, y}, quarters ? RGB(255, 0, 0) : colour);
    Fill(context, {x, 0, all.right, y}, quarters ? RGB(0, 255, 0) : colour);
    Fill(context, {0, y, x, all.bottom}, quarters ? RGB(0, 0, 255) : colour);
    Fill(context, {x, y, all.right, all.bottom}, quarters ? RGB(255, 255, 255) : colour);
  }

  static void Fill(HDC context, const RECT& place, COLORREF colour) {
    HBRUSH brush = CreateSolidBrush(colour);
    FillRect(context, &place, brush);
    DeleteObject(brush);
  }

  std::atomic<COLORREF> colour_{kQuarters};
  HWND handle_ = nullptr;
  std::jthread thread_;
};

}  // namespace brisolte::testing
