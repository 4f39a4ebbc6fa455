// Shows the known picture in a window until it is closed: see options.h for the arguments.

#include <windows.h>
// After windows.h, which declares what it needs.
#include <mmsystem.h>

#include <exception>
#include <iostream>

#include "options.h"
#include "support/command_line.h"
#include "window.h"

int WINAPI WinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, LPSTR /*command*/, int /*show*/) {
  try {
    // Sizes are pixels of the screen, on scaled monitors too.
    SetProcessDpiAwarenessContext(DPI_AWARENESS_CONTEXT_PER_MONITOR_AWARE_V2);
    timeBeginPeriod(1);
    brisolte::PatternWindow(brisolte::ParseOptions(brisolte::testing::CommandLineArguments())).Run();
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "pattern: " << error.what() << '\n';
    return 1;
  }
}
