#pragma once

#include <windows.h>

#include <fstream>
#include <string>

namespace brisolte::testing {

/// What calls of the system answer while it lives; the stand-ins read it from this file.
class StandinFault {
 public:
  explicit StandinFault(const std::string& rule) { std::ofstream(kFile) << rule << "\n"; }
  StandinFault(const StandinFault&) = delete;
  StandinFault& operator=(const StandinFault&) = delete;
  ~StandinFault() { DeleteFileA(kFile); }

 private:
  static constexpr const char* kFile = R"(C:\standin-faults.txt)";
};

}  // namespace brisolte::testing
