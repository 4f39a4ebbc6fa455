#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brisolte::standins {

/// What a call does instead of what it is for.
struct Fault {
  bool hangs = false;       ///< it does not come back
  std::int32_t result = 0;  ///< what it answers otherwise

  friend bool operator==(const Fault&, const Fault&) = default;
};

/// Which calls are to answer with which result: lines of `CALL RESULT [skip N] [times M]`, where RESULT is a
/// number or `hang`.
///
/// A rule lets its first N calls pass and answers the next M, or all that follow when M is not given. Lines
/// that do not read so are ignored, as are empty ones and those that start with `#`.
class FaultPlan {
 public:
  FaultPlan() = default;
  explicit FaultPlan(std::string_view text);

  /// Counts one call of this name and gives what it is to do instead of its own work.
  std::optional<Fault> Take(std::string_view call);

 private:
  struct Rule {
    Fault fault;
    std::uint64_t skip = 0;
    std::uint64_t times = UINT64_MAX;
  };
  void AddLine(std::string_view line);

  std::map<std::string, std::vector<Rule>, std::less<>> rules_;
};

}  // namespace brisolte::standins
