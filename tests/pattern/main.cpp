// Shows the known picture in a window until it is closed: see options.h for the arguments.

#include <windows.h>
// After windows.h, which declares what these need.
#include <mmsystem.h>
#include <shellapi.h>

#include <exception>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "options.h"
#include "window.h"

namespace {

struct LocalFreeDeleter {
  void operator()(wchar_t** list) const { LocalFree(static_cast<HLOCAL>(list)); }
};

std::vector<std::wstring> Arguments() {
  int count = 0;
  const std::unique_ptr<wchar_t*, LocalFreeDeleter> list(CommandLineToArgvW(GetCommandLineW(), &count));
  return list ? std::vector<std::wstring>(list.get() + 1, list.get() + count) : std::vector<std::wstring>();
}

}  // namespace

int WINAPI WinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, LPSTR /*command*/, int /*show*/) {
  try {
    // Sizes are pixels of the screen, on scaled monitors too.
    SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    timeBeginPeriod(1);
    brisolte::PatternWindow(brisolte::ParseOptions(Arguments())).Run();
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "pattern: " << error.what() << '\n';
    return 1;
  }
}
