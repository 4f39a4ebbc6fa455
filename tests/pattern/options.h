#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace brisolte {

/// What the command line asks for. Lengths are pixels; width and height are those of the client area.
struct PatternOptions {
  std::wstring title = L"Pattern";
  int x = 0;
  int y = 0;
  int width = 640;
  int height = 360;
  int framesPerSecond = 60;
  int palette = 0;  ///< 0 to 3: turns the four colours, so that two windows can be told apart
  bool borderless = false;
  bool topmost = false;
  int seconds = 0;                 ///< ends by itself after this time; 0: only when told
  std::filesystem::path ready;     ///< where the window's handle and place are written
  std::filesystem::path control;   ///< where commands are read
  std::filesystem::path progress;  ///< where the number of painted pictures is written
};

/// Reads the arguments after the program's name. Throws std::invalid_argument with the word that was not
/// understood.
PatternOptions ParseOptions(const std::vector<std::wstring>& arguments);

}  // namespace brisolte
