#include "tests/test_window.h"

#include <array>
#include <future>
#include <sstream>
#include <stdexcept>

namespace brisolte::standins {

namespace {

constexpr const wchar_t* kClass = L"StandinTestWindow";
constexpr const wchar_t* kForeignTitle = L"Stand-in test of another process";

LRESULT CALLBACK WindowProcedure(HWND window, UINT message, WPARAM first, LPARAM second) {
  switch (message) {
    case WM_PAINT: {
      PAINTSTRUCT paint{};
      HDC dc = BeginPaint(window, &paint);
      RECT all{};
      GetClientRect(window, &all);
      HBRUSH brush = CreateSolidBrush(static_cast<COLORREF>(GetWindowLongPtrW(window, GWLP_USERDATA)));
      FillRect(dc, &all, brush);
      DeleteObject(brush);
      EndPaint(window, &paint);
      return 0;
    }
    case WM_DESTROY:
      PostQuitMessage(0);
      return 0;
    default:
      return DefWindowProcW(window, message, first, second);
  }
}

HWND MakeWindow(const RECT& place, COLORREF color, const wchar_t* title) {
  WNDCLASSW description{};
  description.lpfnWndProc = WindowProcedure;
  description.hInstance = GetModuleHandleW(nullptr);
  description.lpszClassName = kClass;
  RegisterClassW(&description);
  HWND window = CreateWindowExW(WS_EX_TOPMOST, kClass, title, WS_OVERLAPPEDWINDOW, place.left, place.top,
                                place.right - place.left, place.bottom - place.top, nullptr, nullptr,
                                description.hInstance, nullptr);
  SetWindowLongPtrW(window, GWLP_USERDATA, static_cast<LONG_PTR>(color));
  ShowWindow(window, SW_SHOWNOACTIVATE);
  UpdateWindow(window);
  return window;
}

void RunMessages() {
  for (MSG message{}; GetMessageW(&message, nullptr, 0, 0) > 0;) {
    DispatchMessageW(&message);
  }
}

}  // namespace

TestWindow::TestWindow(const RECT& place, COLORREF color, const wchar_t* title) {
  std::promise<HWND> made;
  auto window = made.get_future();
  thread_ = std::jthread([&made, place, color, title] {
    made.set_value(MakeWindow(place, color, title));
    RunMessages();
  });
  window_ = window.get();
}

TestWindow::~TestWindow() {
  Destroy();
}

void TestWindow::Fill(COLORREF color) {
  SetWindowLongPtrW(window_, GWLP_USERDATA, static_cast<LONG_PTR>(color));
  RedrawWindow(window_, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW);
}

void TestWindow::MoveTo(const RECT& place) {
  SetWindowPos(window_, nullptr, place.left, place.top, place.right - place.left, place.bottom - place.top,
               SWP_NOZORDER | SWP_NOACTIVATE);
}

void TestWindow::Destroy() {
  if (thread_.joinable()) {
    SendMessageW(window_, WM_CLOSE, 0, 0);
    thread_.join();
  }
}

ForeignWindow::ForeignWindow(const RECT& place, COLORREF color) {
  std::array<wchar_t, MAX_PATH> self{};
  GetModuleFileNameW(nullptr, self.data(), static_cast<DWORD>(self.size()));
  std::wostringstream words;
  words << L"\"" << self.data() << L"\" --window " << place.left << L' ' << place.top << L' ' << place.right
        << L' ' << place.bottom << L' ' << color;
  std::wstring command = words.str();
  STARTUPINFOW start{};
  start.cb = sizeof(start);
  if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &start,
                     &process_) == FALSE) {
    throw std::runtime_error("the process of the foreign window did not start");
  }
  for (int i = 0; i < 1000 && (window_ == nullptr || IsWindowVisible(window_) == FALSE); ++i) {
    Sleep(10);
    window_ = FindWindowW(kClass, kForeignTitle);
  }
}

ForeignWindow::~ForeignWindow() {
  TerminateProcess(process_.hProcess, 0);
  WaitForSingleObject(process_.hProcess, 10'000);
  CloseHandle(process_.hThread);
  CloseHandle(process_.hProcess);
}

int ShowForeignWindow(const std::wstring& words) {
  std::wistringstream input(words);
  RECT place{};
  COLORREF color = 0;
  input >> place.left >> place.top >> place.right >> place.bottom >> color;
  MakeWindow(place, color, kForeignTitle);
  RunMessages();
  return 0;
}

}  // namespace brisolte::standins
