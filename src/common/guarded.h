#pragma once

#include <exception>
#include <string>

#include "common/logger.h"

namespace brisolte {

/// Runs `step`, which gives a bool; an exception becomes an ERROR line and false. The routine reads "in ..."
/// or "during ...".
template <typename Step>
bool Guarded(const char* prefix, const char* routine, Step step) {
  try {
    return step();
  } catch (const std::exception& error) {
    Logger::Error(std::string(prefix) + "Exception " + routine + ": " + error.what());
  } catch (...) {
    Logger::Error(std::string(prefix) + "Unknown exception " + routine);
  }
  return false;
}

}  // namespace brisolte
