// Holds files so that nobody else can open them: hold READY FILE...
// Creates and opens each file for itself alone, then creates READY, and lets go when READY is removed.

#include <windows.h>
// After windows.h, which declares what it needs.
#include <shellapi.h>

#include <memory>
#include <vector>

namespace {

struct LocalFreeDeleter {
  void operator()(wchar_t** list) const { LocalFree(static_cast<HLOCAL>(list)); }
};

struct HandleCloser {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using Handle = std::unique_ptr<void, HandleCloser>;

Handle Create(const wchar_t* file) {
  HANDLE handle = CreateFileW(file, GENERIC_READ | GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                              FILE_ATTRIBUTE_NORMAL, nullptr);
  return Handle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

}  // namespace

int WINAPI WinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, LPSTR /*command*/, int /*show*/) {
  int count = 0;
  const std::unique_ptr<wchar_t*, LocalFreeDeleter> list(CommandLineToArgvW(GetCommandLineW(), &count));
  if (!list || count < 3) {
    return 2;
  }
  std::vector<Handle> held;
  for (int i = 2; i < count; ++i) {
    held.push_back(Create(list.get()[i]));
    if (!held.back()) {
      return 1;
    }
  }
  const wchar_t* ready = list.get()[1];
  if (!Create(ready)) {
    return 1;
  }
  while (GetFileAttributesW(ready) != INVALID_FILE_ATTRIBUTES) {
    Sleep(20);
  }
  return 0;
}
