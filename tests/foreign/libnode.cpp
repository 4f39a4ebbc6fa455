#include <node_api.h>
#include <windows.h>

#include <cstdlib>
#include <string>

namespace brisolte {

/// A Node-API function of the program, which shows it under a name where no addon looks: napj_ instead of
/// napi_.
class HostFunction {
 public:
  explicit HostFunction(std::string name) {
    name.replace(0, 5, "napj_");
    function_ = reinterpret_cast<AnyFunction>(GetProcAddress(GetModuleHandleW(nullptr), name.c_str()));
  }

  template <typename Function, typename... Arguments>
  auto Call(Arguments... arguments) const {
    return reinterpret_cast<Function>(function_)(arguments...);
  }

 private:
  using AnyFunction = void (*)();

  AnyFunction function_;
};

}  // namespace brisolte

// This library has the functions under their names.
#include "binding/host_functions.inc"
