#include "shared/fault_plan.h"

#include <exception>
#include <iterator>
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
  std::istringstream input{std::string(line)};
  const std::vector<std::string> words{std::istream_iterator<std::string>(input), {}};
  if (words.size() < 2 || words.size() % 2 != 0 || words[0].starts_with('#')) {
    return;
  }
  const bool hangs = words[1] == "hang";
  const auto result = hangs ? std::optional<std::uint64_t>(0) : Number(words[1]);
  if (!result) {
    return;
  }
  Rule rule{.fault = {hangs, static_cast<std::int32_t>(*result)}};
  for (std::size_t i = 2; i < words.size(); i += 2) {
    const auto number = Number(words[i + 1]);
    if (!number || (words[i] != "skip" && words[i] != "times")) {
      return;
    }
    (words[i] == "skip" ? rule.skip : rule.times) = *number;
  }
  rules_[words[0]].push_back(rule);
}

std::optional<Fault> FaultPlan::Take(std::string_view call) {
  const auto found = rules_.find(call);
  if (found == rules_.end()) {
    return std::nullopt;
  }
  for (Rule& rule : found->second) {
    if (rule.skip > 0) {
      --rule.skip;
    } else if (rule.times > 0) {
      --rule.times;
      return rule.fault;
    }
  }
  return std::nullopt;
}

}  // namespace brisolte::standins
