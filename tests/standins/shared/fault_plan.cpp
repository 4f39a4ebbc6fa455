#include "shared/fault_plan.h"

#include <sstream>

namespace brisolte::standins {

namespace {

std::optional<std::uint64_t> Number(const std::string& word) {
  try {
    std::size_t used = 0;
    const std::uint64_t number = std::stoull(word, &used, 0);
    return used == word.size() ? std::optional(number) : std::nullopt;
  } catch (const std::exception&) {
    return std::nullopt;
  }
}

}  // namespace

FaultPlan::FaultPlan(std::string_view text) {
  while (!text.empty()) {
    const auto end = text.find('\n');
    AddLine(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
}

void FaultPlan::AddLine(std::string_view line) {
  std::istringstream words{std::string(line)};
  std::string call;
  std::string result;
  if (!(words >> call >> result) || call.starts_with('#')) {
    return;
  }
  const auto code = Number(result);
  if (!code) {
    return;
  }
  Rule rule{.result = static_cast<std::int32_t>(*code)};
  for (std::string key, value; words >> key >> value;) {
    const auto number = Number(value);
    if (!number || (key != "skip" && key != "times")) {
      return;
    }
    (key == "skip" ? rule.skip : rule.times) = *number;
  }
  rules_[call].push_back(rule);
}

std::optional<std::int32_t> FaultPlan::Take(std::string_view call) {
  const auto found = rules_.find(call);
  if (found == rules_.end()) {
    return std::nullopt;
  }
  for (Rule& rule : found->second) {
    if (rule.skip > 0) {
      --rule.skip;
    } else if (rule.times > 0) {
      --rule.times;
      return rule.result;
    }
  }
  return std::nullopt;
}

}  // namespace brisolte::standins
