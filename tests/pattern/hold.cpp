// Holds files so that nobody else can open them: hold READY FILE...
// Creates and opens each file for itself alone, then creates READY, and lets go when READY is removed.

#include <windows.h>

#include <string>
#include <vector>

#include "common/handle.h"
#include "support/command_line.h"

namespace {

using brisolte::Handle;

Handle Create(const wchar_t* file) {
  HANDLE handle = CreateFileW(file, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
  return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

}  // namespace

int WINAPI WinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, LPSTR /*command*/, int /*show*/) {
  const std::vector<std::wstring> arguments = brisolte::testing::CommandLineArguments();
  if (arguments.size() < 2) {
    return 2;
  }
  std::vector<Handle> held;
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    held.push_back(Create(arguments[i].c_str()));
    if (!held.back()) {
      return 1;
    }
  }
  const wchar_t* ready = arguments[0].c_str();
  if (!Create(ready)) {
    return 1;
  }
  while (GetFileAttributesW(ready) != INVALID_FILE_ATTRIBUTES) {
    Sleep(20);
  }
  return 0;
}
