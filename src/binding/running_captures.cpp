#include "binding/running_captures.h"

#include "binding/capture.h"

namespace brisolte {

void RunningCaptures::StopAll() {
  // Stopping one may let scripts run, which stop others or start new ones.
  const std::set<Capture*> now = captures_;
  for (Capture* capture : now) {
    if (captures_.contains(capture)) {
      capture->StopAtExit();
    }
  }
}

}  // namespace brisolte
