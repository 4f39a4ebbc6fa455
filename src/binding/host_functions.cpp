#include "binding/host_functions.h"

#include <windows.h>

#include <cstdlib>
#include <string>

namespace brisolte {
namespace {

/// What has Node-API: the program itself, or the Node.js that it is linked with as a library.
HMODULE FindNode() {
  for (const auto* name : {static_cast<const wchar_t*>(nullptr), L"libnode.dll"}) {
    const HMODULE loaded = GetModuleHandleW(name);
    if (loaded != nullptr && GetProcAddress(loaded, "napi_throw_error") != nullptr) {
      return loaded;
    }
  }
  return nullptr;
}

}  // namespace

/// A Node-API function of the Node.js that runs this module, one of a list of all.
///
/// The module does not import Node-API by the name of a program file, because an application built on Node.js
/// has a name of its own. Each function is found by its name in what runs instead. The usual way, a delayed
/// import of "node.exe" that a hook of the linker's redirects, is one of MSVC's alone, and ends the process
/// where a function is missing; here that is an error of `require`.
class HostFunction {
 public:
  explicit HostFunction(const char* name) : name_(name), next_(first) { first = this; }

  bool found() const { return function_ != nullptr; }

  template <typename Function, typename... Arguments>
  auto Call(Arguments... arguments) const {
    return reinterpret_cast<Function>(function_)(arguments...);
  }

  /// Looks all of them up; gives the name of one that is not there, or null.
  static const char* FindAll() {
    const HMODULE node = FindNode();
    const char* missing = nullptr;
    for (HostFunction* function = first; function != nullptr; function = function->next_) {
      function->function_ =
          node != nullptr ? reinterpret_cast<AnyFunction>(GetProcAddress(node, function->name_)) : nullptr;
      missing = function->found() ? missing : function->name_;
    }
    return missing;
  }

 private:
  using AnyFunction = void (*)();

  static inline HostFunction* first = nullptr;

  const char* const name_;
  HostFunction* const next_;
  AnyFunction function_ = nullptr;
};

}  // namespace brisolte

// Defines each function that <node_api.h> declares, as a call of its HostFunction.
#include "binding/host_functions.inc"

namespace brisolte {

bool BindHostFunctions(napi_env env) {
  // Environments on several threads may load the module at the same moment.
  static const char* const kMissing = HostFunction::FindAll();
  if (kMissing == nullptr) {
    return true;
  }
  if (host_napi_throw_error.found()) {
    const std::string text =
        std::string("brisolte needs Node-API version 8, but this program lacks ") + kMissing;
    napi_throw_error(env, nullptr, text.c_str());
  }
  return false;
}

}  // namespace brisolte
