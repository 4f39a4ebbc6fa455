#include "video/confined_service.h"

#include <exception>
#include <string>

#include "common/logger.h"

namespace brisolte {

ConfinedService::~ConfinedService() {
  try {
    // With the last reference the objects go, on this thread of all threads.
    if (!CaptureThread().Perform([last = std::move(service_)]() mutable { last.reset(); })) {
      LeaveBehind("giving the capture back");
    }
  } catch (const std::exception& error) {
    Logger::Error(std::string("Failed to give a capture back to the capture service: ") + error.what());
  }
}

void ConfinedService::LeaveBehind(const char* name) {
  isLeftBehind_ = true;
  Logger::Error(LeftBehindText(name));
}

}  // namespace brisolte
