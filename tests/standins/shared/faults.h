#pragma once

#include <windows.h>

#include <optional>
#include <string_view>

namespace brisolte::standins {

/// The result that this call is to have instead of its own, by the rules in C:\standin-faults.txt; usually
/// none.
///
/// The file is looked at on every call and read again when it has changed, which starts its counts anew.
/// A call that is to hang stays in here until the file changes, and then does what it is for. `group` is a
/// second name that stands for several calls. Any thread.
std::optional<HRESULT> TakeFault(std::string_view call, std::string_view group = {});

/// Between `false` and `true` TakeFault gives nothing on this thread: a stand-in's own work is no call of the
/// product.
void TurnFaults(bool on);

/// The same for as long as it lives.
class NoFaults {
 public:
  NoFaults() { TurnFaults(false); }
  ~NoFaults() { TurnFaults(true); }
  NoFaults(const NoFaults&) = delete;
  NoFaults& operator=(const NoFaults&) = delete;
  NoFaults(NoFaults&&) = delete;
  NoFaults& operator=(NoFaults&&) = delete;
};

}  // namespace brisolte::standins
