// Writes what a process holds of the system as one line of JSON: usage PID
// A figure that cannot be had is null.

#include <windows.h>
// After windows.h, which declares what they need.
#include <psapi.h>
#include <tlhelp32.h>

#include <cstdint>
#include <iostream>
#include <optional>
#include <string>

#include "common/handle.h"
#include "support/command_line.h"
#include "usage/gui_objects.h"
#include "usage/handle_count.h"
#include "usage/remote_count.h"

namespace {

using brisolte::Handle;
using Figure = std::optional<std::uint64_t>;

Figure CountThreads(DWORD pid) {
  HANDLE made = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
  if (made == INVALID_HANDLE_VALUE) {
    return std::nullopt;
  }
  const Handle snapshot(made);
  THREADENTRY32 entry{};
  entry.dwSize = sizeof(entry);
  std::uint64_t threads = 0;
  for (BOOL more = Thread32First(snapshot.get(), &entry); more != FALSE;
       more = Thread32Next(snapshot.get(), &entry)) {
    threads += entry.th32OwnerProcessID == pid ? 1 : 0;
  }
  return threads;
}

/// Objects of the stand-in of this name, when the process has it loaded.
Figure CountObjects(HANDLE process, const wchar_t* standin) {
  return brisolte::CallRemoteCount(process, standin, "StandinObjectCount");
}

void Write(const char* name, Figure figure, const char* after = ",") {
  std::cout << '"' << name << "\":" << (figure ? std::to_string(*figure) : "null") << after;
}

}  // namespace

int main() {
  const auto words = brisolte::testing::CommandLineArguments();
  const DWORD pid = words.size() == 1 ? wcstoul(words[0].c_str(), nullptr, 10) : 0;
  const Handle process(OpenProcess(PROCESS_ALL_ACCESS, FALSE, pid));
  PROCESS_MEMORY_COUNTERS memory{};
  memory.cb = sizeof(memory);
  if (process == nullptr || GetProcessMemoryInfo(process.get(), &memory, sizeof(memory)) == FALSE) {
    std::cerr << "usage PID: no such process\n";
    return 1;
  }
  // Before the calls into the process, whose threads would be counted.
  const Figure threads = CountThreads(pid);
  const brisolte::WindowCounts windows = brisolte::CountWindows(pid);
  std::cout << '{';
  Write("privateBytes", memory.PagefileUsage);
  Write("workingSet", memory.WorkingSetSize);
  Write("handles", brisolte::CountHandles(pid));
  Write("threads", threads);
  Write("gdiObjects", brisolte::CountGdiObjects(process.get()));
  Write("windows", windows.others);
  Write("deviceWindows", windows.ofDevices);
  Write("captureObjects", CountObjects(process.get(), L"GraphicsCapture.dll"));
  Write("direct3dObjects", CountObjects(process.get(), L"d3d11.dll"));
  Write("comLetGo", brisolte::CallRemoteCount(process.get(), L"GraphicsCapture.dll", "StandinComLetGoCount"),
        "}\n");
  return 0;
}
