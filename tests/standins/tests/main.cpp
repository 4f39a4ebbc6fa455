#include <gmock/gmock.h>
#include <objbase.h>
#include <windows.h>

#include <string>

#include "tests/test_window.h"

int main(int argc, char** argv) {
  if (argc > 1 && std::string(argv[1]) == "--window") {
    std::wstring words;
    for (int i = 2; i < argc; ++i) {
      words += std::wstring(argv[i], argv[i] + std::string(argv[i]).size()) + L' ';
    }
    return brisolte::standins::ShowForeignWindow(words);
  }
  testing::InitGoogleMock(&argc, argv);
  CoInitializeEx(nullptr, COINIT_MULTITHREADED);
  return RUN_ALL_TESTS();
}
