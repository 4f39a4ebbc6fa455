#pragma once

#include "common/service_thread.h"

namespace brisolte {

/// The thread on which this process calls the capture service: all instances and threads of the host share
/// it. It is in the multithreaded apartment, whatever the callers' threads are in and become, because the
/// service's objects may be called only from the apartment that they were made in.
///
/// A waiting caller takes the messages that other threads send to its windows, and runs nothing else: the
/// service may ask a window of the host, which belongs to the caller, for its title.
///
/// Lives as long as the process.
ServiceThread& CaptureThread();

}  // namespace brisolte
