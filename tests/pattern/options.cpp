#include "options.h"

#include <functional>
#include <map>
#include <stdexcept>

namespace brisolte {
namespace {

std::string Narrow(const std::wstring& text) {
  return std::filesystem::path(text).string();
}

int Number(const std::wstring& text) {
  std::size_t used = 0;
  const int value = std::stoi(text, &used);
  if (used != text.size()) {
    throw std::invalid_argument(Narrow(text));
  }
  return value;
}

}  // namespace

PatternOptions ParseOptions(const std::vector<std::wstring>& arguments) {
  PatternOptions options;
  const auto number = [](int& field) { return [&field](const std::wstring& text) { field = Number(text); }; };
  const auto path = [](std::filesystem::path& field) {
    return [&field](const std::wstring& text) { field = text; };
  };
  const std::map<std::wstring, std::function<void(const std::wstring&)>> withValue{
      {L"--title", [&options](const std::wstring& text) { options.title = text; }},
      {L"--x", number(options.x)},
      {L"--y", number(options.y)},
      {L"--width", number(options.width)},
      {L"--height", number(options.height)},
      {L"--fps", number(options.framesPerSecond)},
      {L"--palette", number(options.palette)},
      {L"--seconds", number(options.seconds)},
      {L"--ready", path(options.ready)},
      {L"--control", path(options.control)},
      {L"--progress", path(options.progress)},
  };
  const std::map<std::wstring, bool*> flags{{L"--borderless", &options.borderless},
                                            {L"--topmost", &options.topmost}};

  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (const auto flag = flags.find(arguments[i]); flag != flags.end()) {
      *flag->second = true;
      continue;
    }
    const auto option = withValue.find(arguments[i]);
    if (option == withValue.end() || i + 1 == arguments.size()) {
      throw std::invalid_argument(Narrow(arguments[i]));
    }
    option->second(arguments[++i]);
  }
  if (options.width < 1 || options.height < 1 || options.framesPerSecond < 1 || options.palette < 0) {
    throw std::invalid_argument("a size, rate or palette that cannot be");
  }
  return options;
}

}  // namespace brisolte
