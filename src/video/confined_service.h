#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

#include "common/hresult_error.h"
#include "video/capture_service.h"
#include "video/capture_thread.h"

namespace brisolte {

/// The HRESULT of a call of the service that did not come back in time (ERROR_TIMEOUT).
inline constexpr auto kServiceTimeout = static_cast<HRESULT>(0x800705B4);

/// The objects that one capture has from the capture service, called on the capture thread only and given
/// back there.
///
/// A call that does not come back in time is left behind with an ERROR line. It keeps the objects until it
/// does, and nobody calls them again: every later call fails at once, as that one did.
class ConfinedService {
 public:
  ConfinedService() = default;
  ConfinedService(const ConfinedService&) = delete;
  ConfinedService& operator=(const ConfinedService&) = delete;
  ~ConfinedService();

  /// What a call gives; std::monostate when it gives nothing.
  template <typename Call, typename... Words>
  using ResultOf = std::conditional_t<std::is_void_v<std::invoke_result_t<Call, CaptureService&, Words...>>,
                                      std::monostate, std::invoke_result_t<Call, CaptureService&, Words...>>;

  /// Calls `call` with the CaptureService and `words`. Gives what it gives, or raises what it raises; empty
  /// when it does not come back. `name` is for the log. The call owns all that it uses.
  template <typename Call, typename... Words>
  auto Try(const char* name, const Call& call, const Words&... words)
      -> std::optional<ResultOf<Call, Words...>> {
    if (isLeftBehind_) {
      return std::nullopt;
    }
    auto result = CaptureThread().Run([service = service_, call, words...]() -> ResultOf<Call, Words...> {
      if constexpr (std::is_void_v<std::invoke_result_t<Call, CaptureService&, Words...>>) {
        std::invoke(call, *service, words...);
        return {};
      } else {
        return std::invoke(call, *service, words...);
      }
    });
    if (!result) {
      LeaveBehind(name);
    }
    return result;
  }

  /// The same for a call that gives an HRESULT.
  template <typename Call, typename... Words>
  HRESULT Ask(const char* name, const Call& call, const Words&... words) {
    return Try(name, call, words...).value_or(kServiceTimeout);
  }

  /// The same for a call that cannot say by its result that it failed: then it raises HResultError.
  template <typename Call, typename... Words>
  auto Demand(const char* name, const Call& call, const Words&... words) -> ResultOf<Call, Words...> {
    auto result = Try(name, call, words...);
    if (!result) {
      throw HResultError(kServiceTimeout);
    }
    return *std::move(result);
  }

 private:
  void LeaveBehind(const char* name);

  std::shared_ptr<CaptureService> service_ = std::make_shared<CaptureService>();
  bool isLeftBehind_ = false;
};

}  // namespace brisolte
