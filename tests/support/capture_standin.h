#pragma once

#include <windows.h>

#include <fstream>
#include <string>

#include "support/exported_function.h"

namespace brisolte::testing {

/// Whether the stand-in for the capture service gets to have no object alive; its threads let go of theirs in
/// their own time.
inline bool ServiceBecomesEmpty() {
  using Count = long(WINAPI*)();
  const auto count = ExportedFunction<Count>(GetModuleHandleW(L"capture_service.dll"), "StandinObjectCount");
  for (int i = 0; i < 2000 && count() != 0; ++i) {
    Sleep(10);
  }
  return count() == 0;
}

/// What calls of the stand-ins answer while it lives; they read it from this file.
class Fault {
 public:
  explicit Fault(const std::string& rule) { std::ofstream(kFile) << rule << "\n"; }
  Fault(const Fault&) = delete;
  Fault& operator=(const Fault&) = delete;
  ~Fault() { DeleteFileA(kFile); }

 private:
  static constexpr const char* kFile = R"(C:\standin-faults.txt)";
};

}  // namespace brisolte::testing
