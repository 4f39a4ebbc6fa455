#pragma once

#include <node_api.h>

#include <cstdint>

namespace brisolte {

/// Memory behind a JavaScript object that the collector does not see, told to it for as long as this lives,
/// so that it collects before such objects pile up. On the environment's thread.
class ExternalMemory {
 public:
  ExternalMemory(napi_env env, std::int64_t bytes) : env_(env), bytes_(bytes) { Adjust(bytes_); }
  ExternalMemory(const ExternalMemory&) = delete;
  ExternalMemory& operator=(const ExternalMemory&) = delete;
  ~ExternalMemory() { Adjust(-bytes_); }

 private:
  // Fails for null arguments only.
  void Adjust(std::int64_t change) const {
    std::int64_t total = 0;
    napi_adjust_external_memory(env_, change, &total);
  }

  napi_env env_;
  std::int64_t bytes_;
};

}  // namespace brisolte
