#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brisolte::standins {

/// Which calls are to answer with which result: lines of `CALL RESULT [skip N] [times M]`.
///
/// A rule lets its first N calls pass and answers the next M, or all that follow when M is not given. Lines
/// that do not read so are ignored, as are empty ones and those that start with `#`.
class FaultPlan {
 public:
  FaultPlan() = default;
  explicit FaultPlan(std::string_view text);

  /// Counts one call of this name and gives the result that it is to have instead of its own.
  std::optional<std::int32_t> Take(std::string_view call);

 private:
  struct Rule {
    std::int32_t result = 0;
    std::uint64_t skip = 0;
    std::uint64_t times = UINT64_MAX;
  };
  void AddLine(std::string_view line);

  std::map<std::string, std::vector<Rule>, std::less<>> rules_;
};

}  // namespace brisolte::standins
