#pragma once

#include <string>

namespace brisolte {

/// One active audio endpoint.
struct AudioDeviceInfo {
  std::string id;    ///< the endpoint's id, UTF-8
  std::string name;  ///< its friendly name, UTF-8
  bool isDefault = false;
  bool isActive = true;
};

}  // namespace brisolte
