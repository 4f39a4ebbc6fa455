#include "window.h"

#include <dwmapi.h>

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace brisolte {
namespace {

using Clock = std::chrono::steady_clock;

constexpr const wchar_t* kClassName = L"BrisoltePattern";

DWORD StyleOf(const PatternOptions& options) {
  return options.borderless ? WS_POPUP : WS_OVERLAPPEDWINDOW;
}

DWORD ExtendedStyleOf(const PatternOptions& options) {
  return options.topmost ? WS_EX_TOPMOST : 0;
}

void RegisterWindowClass(WNDPROC procedure) {
  WNDCLASSEXW description{};
  description.cbSize = sizeof description;
  description.lpfnWndProc = procedure;
  description.hInstance = GetModuleHandleW(nullptr);
  description.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
  description.lpszClassName = kClassName;
  if (RegisterClassExW(&description) == 0) {
    throw std::runtime_error("RegisterClassExW failed");
  }
}

std::string Json(const RECT& rect) {
  std::ostringstream text;
  text << R"({"left":)" << rect.left << R"(,"top":)" << rect.top << R"(,"width":)" << rect.right - rect.left
       << R"(,"height":)" << rect.bottom - rect.top << '}';
  return text.str();
}

/// What a capture of the window shows: the frame without the invisible borders for the mouse.
RECT VisibleFrame(HWND window) {
  RECT frame{};
  if (FAILED(DwmGetWindowAttribute(window, DWMWA_EXTENDED_FRAME_BOUNDS, &frame, sizeof frame)) ||
      IsRectEmpty(&frame) != FALSE) {
    GetWindowRect(window, &frame);
  }
  return frame;
}

}  // namespace

PatternWindow::PatternWindow(const PatternOptions& options)
    : options_(options),
      picture_(options.width, options.height, options.palette),
      canvas_(CreateCompatibleDC(nullptr)),
      progress_(options.progress),
      control_(options.control) {
  RegisterWindowClass(&PatternWindow::Procedure);
  RECT frame{0, 0, options.width, options.height};
  AdjustWindowRectEx(&frame, StyleOf(options), FALSE, ExtendedStyleOf(options));
  window_ = CreateWindowExW(ExtendedStyleOf(options), kClassName, options.title.c_str(), StyleOf(options),
                            options.x, options.y, frame.right - frame.left, frame.bottom - frame.top, nullptr,
                            nullptr, GetModuleHandleW(nullptr), this);
  if (window_ == nullptr) {
    throw std::runtime_error("CreateWindowExW failed");
  }
  ShowWindow(window_, SW_SHOWNA);
  UpdateWindow(window_);
}

PatternWindow::~PatternWindow() {
  if (IsWindow(window_) != FALSE) {
    DestroyWindow(window_);
  }
}

void PatternWindow::Run() {
  const Clock::time_point end = Clock::now() + std::chrono::seconds(options_.seconds);
  const auto interval = std::chrono::nanoseconds(1'000'000'000 / options_.framesPerSecond);
  constexpr auto kCommandInterval = std::chrono::milliseconds(30);
  Clock::time_point nextPicture = Clock::now();
  Clock::time_point nextCommands = nextPicture;
  WriteReady();
  while (IsWindow(window_) != FALSE) {
    WaitUntil(std::min(nextPicture, nextCommands));
    PumpMessages();
    if (failed_) {
      throw std::runtime_error("CreateDIBSection failed");
    }
    const Clock::time_point now = Clock::now();
    if (now >= nextPicture) {
      PaintNext();
      // A small delay is made up with the next picture; after a long one the later pictures move.
      nextPicture = now + interval - std::min<Clock::duration>(now - nextPicture, interval / 2);
    }
    if (now >= nextCommands) {
      ObeyNewCommands();
      nextCommands = now + kCommandInterval;
    }
    if (options_.seconds > 0 && now >= end) {
      return;
    }
  }
}

LRESULT CALLBACK PatternWindow::Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message == WM_NCCREATE) {
    auto* self = static_cast<PatternWindow*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
    self->window_ = window;
    SetWindowLongPtrW(window, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(self));
  }
  auto* self = reinterpret_cast<PatternWindow*>(GetWindowLongPtrW(window, GWLP_USERDATA));
  return self != nullptr ? self->Handle(message, wParam, lParam)
                         : DefWindowProcW(window, message, wParam, lParam);
}

LRESULT PatternWindow::Handle(UINT message, WPARAM wParam, LPARAM lParam) {
  switch (message) {
    case WM_SIZE:
      if (wParam != SIZE_MINIMIZED) {
        MakeCanvas(LOWORD(lParam), HIWORD(lParam));
      }
      return 0;
    case WM_ERASEBKGND:
      return 1;
    case WM_PAINT: {
      PAINTSTRUCT paint{};
      Show(BeginPaint(window_, &paint), 0, height_);
      EndPaint(window_, &paint);
      return 0;
    }
    default:
      return DefWindowProcW(window_, message, wParam, lParam);
  }
}

void PatternWindow::MakeCanvas(int width, int height) {
  if (width < 1 || height < 1) {
    return;
  }
  BITMAPINFO layout{};
  layout.bmiHeader.biSize = sizeof layout.bmiHeader;
  layout.bmiHeader.biWidth = width;
  layout.bmiHeader.biHeight = -height;
  layout.bmiHeader.biPlanes = 1;
  layout.bmiHeader.biBitCount = 32;
  layout.bmiHeader.biCompression = BI_RGB;
  void* bits = nullptr;
  decltype(bitmap_) bitmap(CreateDIBSection(nullptr, &layout, DIB_RGB_COLORS, &bits, nullptr, 0));
  if (!bitmap) {
    failed_ = true;  // told by Run: no exception may leave a window procedure
    return;
  }
  SelectObject(canvas_.get(), bitmap.get());
  bitmap_ = std::move(bitmap);
  width_ = width;
  height_ = height;
  pixels_ = {static_cast<std::uint32_t*>(bits), static_cast<std::size_t>(width) * height};
  picture_ = Picture(width, height, options_.palette);
  picture_.PaintStill(pixels_);
  picture_.PaintNumber(pixels_, number_);
  InvalidateRect(window_, nullptr, FALSE);
}

void PatternWindow::PaintNext() {
  if (paused_) {
    return;
  }
  ++number_;
  picture_.PaintNumber(pixels_, number_);
  HDC target = GetDC(window_);
  // One copy for both lanes, so that no copy of the screen can fall between them.
  Show(target, picture_.FirstLaneRow(), picture_.EndLaneRow());
  ReleaseDC(window_, target);
  progress_.Write(number_);
}

void PatternWindow::Show(HDC target, int firstRow, int endRow) const {
  BitBlt(target, 0, firstRow, width_, endRow - firstRow, canvas_.get(), 0, firstRow, SRCCOPY);
  GdiFlush();
}

void PatternWindow::ObeyNewCommands() {
  for (const std::string& command : control_.NewLines()) {
    Obey(command);
    ++commands_;
    if (IsWindow(window_) == FALSE) {
      return;
    }
    UpdateWindow(window_);
    WriteReady();
  }
}

void PatternWindow::Obey(const std::string& command) {
  std::istringstream words(command);
  std::string verb;
  int first = 0;
  int second = 0;
  words >> verb >> first >> second;
  if (verb == "resize") {
    SetClientSize(first, second);
  } else if (verb == "move") {
    SetWindowPos(window_, nullptr, first, second, 0, 0, SWP_NOSIZE | SWP_NOZORDER | SWP_NOACTIVATE);
  } else if (verb == "minimize") {
    ShowWindow(window_, SW_MINIMIZE);
  } else if (verb == "restore") {
    ShowWindow(window_, SW_RESTORE);
  } else if (verb == "hide") {
    ShowWindow(window_, SW_HIDE);
  } else if (verb == "show") {
    ShowWindow(window_, SW_SHOWNA);
  } else if (verb == "pause") {
    paused_ = true;
  } else if (verb == "resume") {
    paused_ = false;
  } else if (verb == "close") {
    DestroyWindow(window_);
  } else {
    throw std::runtime_error("unknown command: " + command);
  }
}

void PatternWindow::SetClientSize(int width, int height) const {
  RECT frame{0, 0, width, height};
  AdjustWindowRectEx(&frame, StyleOf(options_), FALSE, ExtendedStyleOf(options_));
  SetWindowPos(window_, nullptr, 0, 0, frame.right - frame.left, frame.bottom - frame.top,
               SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

void PatternWindow::WriteReady() const {
  if (options_.ready.empty()) {
    return;
  }
  RECT client{};
  GetClientRect(window_, &client);
  MapWindowPoints(window_, nullptr, reinterpret_cast<POINT*>(&client), 2);
  std::ostringstream text;
  text << std::boolalpha << R"({"handle":)" << reinterpret_cast<std::intptr_t>(window_) << R"(,"client":)"
       << Json(client) << R"(,"frame":)" << Json(VisibleFrame(window_)) << R"(,"visible":)"
       << (IsWindowVisible(window_) != FALSE) << R"(,"minimized":)" << (IsIconic(window_) != FALSE)
       << R"(,"dpi":)" << GetDpiForWindow(window_) << R"(,"commands":)" << commands_ << "}\n";
  ReplaceFileText(options_.ready, text.str());
}

void PatternWindow::WaitUntil(Clock::time_point due) {
  const auto wait = std::chrono::ceil<std::chrono::milliseconds>(due - Clock::now()).count();
  if (wait > 0) {
    MsgWaitForMultipleObjectsEx(0, nullptr, static_cast<DWORD>(wait), QS_ALLINPUT, MWMO_INPUTAVAILABLE);
  }
}

void PatternWindow::PumpMessages() {
  MSG message{};
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
    TranslateMessage(&message);
    DispatchMessageW(&message);
  }
}

}  // namespace brisolte
