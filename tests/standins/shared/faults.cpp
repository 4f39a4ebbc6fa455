#include "shared/faults.h"

#include <mutex>
#include <string>
#include <tuple>

#include "shared/fault_plan.h"

namespace brisolte::standins {

namespace {

constexpr const wchar_t* kFaultsFile = L"C:\\standin-faults.txt";

constexpr DWORD kLookEveryMs = 10;

thread_local int faultsOff = 0;

class FaultsFile {
 public:
  std::optional<HRESULT> Take(std::string_view call, std::string_view group) {
    const Stamp stamp = StampNow();
    const auto fault = Find(stamp, call, group);
    if (fault && fault->hangs) {
      while (StampNow() == stamp) {
        Sleep(kLookEveryMs);
      }
      return std::nullopt;
    }
    return fault ? std::optional<HRESULT>(fault->result) : std::nullopt;
  }

 private:
  using Stamp = std::tuple<DWORD, DWORD, DWORD>;

  std::optional<Fault> Find(const Stamp& stamp, std::string_view call, std::string_view group) {
    const std::lock_guard lock(mutex_);
    if (stamp != stamp_) {
      stamp_ = stamp;
      plan_ = FaultPlan(Text());
    }
    const auto own = plan_.Take(call);
    const auto shared = group.empty() ? std::nullopt : plan_.Take(group);
    return own ? own : shared;
  }

  static Stamp StampNow() {
    WIN32_FILE_ATTRIBUTE_DATA file{};
    if (GetFileAttributesExW(kFaultsFile, GetFileExInfoStandard, &file) == FALSE) {
      return {};
    }
    return {file.ftLastWriteTime.dwLowDateTime, file.ftLastWriteTime.dwHighDateTime, file.nFileSizeLow};
  }

  static std::string Text() {
    HANDLE file =
        CreateFileW(kFaultsFile, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, 0, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
      return {};
    }
    std::string text(64 * 1024, '\0');
    DWORD read = 0;
    ReadFile(file, text.data(), static_cast<DWORD>(text.size()), &read, nullptr);
    CloseHandle(file);
    text.resize(read);
    return text;
  }

  std::mutex mutex_;
  Stamp stamp_;
  FaultPlan plan_;
};

}  // namespace

std::optional<HRESULT> TakeFault(std::string_view call, std::string_view group) {
  static FaultsFile file;
  return faultsOff > 0 ? std::nullopt : file.Take(call, group);
}

void TurnFaults(bool on) {
  faultsOff += on ? -1 : 1;
}

}  // namespace brisolte::standins
