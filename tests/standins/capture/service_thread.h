#pragma once

#include <functional>

namespace brisolte::standins {

/// Runs `work` on a thread of the service, which nobody waits for: what it uses it owns. It is in the
/// multithreaded apartment only as long as others keep that. False when there is no thread.
bool StartServiceThread(std::function<void()> work);

}  // namespace brisolte::standins
