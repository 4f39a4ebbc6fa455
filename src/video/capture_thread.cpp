#include "video/capture_thread.h"

#include <combaseapi.h>
#include <windows.h>

#include <memory>

#include "common/com_apartment.h"
#include "video/capture_platform.h"

namespace brisolte {
namespace {

/// Holds COM and the service's library for the life of the process: neither is ever given back.
///
/// With its last apartment COM unloads the libraries of its classes, this one too, whose own threads are
/// still in its code some time after a session was closed: the process then ends where there is no code any
/// more. Our reference keeps the code, the apartment keeps what the code uses of COM.
void HoldService() {
  static const bool held = [] {
    CO_MTA_USAGE_COOKIE cookie = nullptr;
    CoIncrementMTAUsage(&cookie);
    // Where it is missing the service's classes are too, and asking for them says so.
    LoadLibraryExW(L"GraphicsCapture.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    return true;
  }();
  static_cast<void>(held);
}

void WorkInApartment(const std::function<void()>& work) {
  HoldService();
  const ComApartment apartment(COINIT_MULTITHREADED);
  work();
}

void TakeSentMessages() {
  MSG message{};
  PeekMessageW(&message, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
}

}  // namespace

ServiceThread& CaptureThread() {
  // Not destroyed at the end of the process, when the system has ended its threads already.
  static ServiceThread& thread =
      *std::make_unique<ServiceThread>(
           ServiceThread::Surroundings{kServicePatience, WorkInApartment, TakeSentMessages})
           .release();
  return thread;
}

}  // namespace brisolte
