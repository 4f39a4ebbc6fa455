#pragma once

#include <windows.h>

#include <memory>

namespace brisolte {

struct HandleCloser {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};

/// An open handle, or null. What the system gives as INVALID_HANDLE_VALUE must not go in.
using Handle = std::unique_ptr<void, HandleCloser>;

}  // namespace brisolte
