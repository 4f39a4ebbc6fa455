#pragma once

#include <windows.h>

namespace brisolte {

/// The function of this name that a DLL exports, as a pointer of the given type, which must be its own. Null
/// when it exports none, and for a null module.
template <typename Function>
Function ExportedFunction(HMODULE module, const char* name) {
  // Compilers warn of a cast from one function type to another, which is what the system means here.
  void* const address = module != nullptr ? reinterpret_cast<void*>(GetProcAddress(module, name)) : nullptr;
  return reinterpret_cast<Function>(address);
}

}  // namespace brisolte
