#include "com_faults/owners.h"

#include <map>
#include <mutex>

namespace brisolte::standins {

namespace {

// Keeps the address of an object that is gone until another one has it.
struct Owners {
  std::mutex mutex;
  std::map<const void*, std::string_view> owners;
};

Owners& All() {
  static Owners all;
  return all;
}

}  // namespace

std::string_view OwnerOf(const void* object) {
  auto& [mutex, owners] = All();
  const std::lock_guard lock(mutex);
  const auto found = owners.find(object);
  return found != owners.end() ? found->second : std::string_view();
}

void SetOwner(const void* object, std::string_view owner) {
  auto& [mutex, owners] = All();
  const std::lock_guard lock(mutex);
  owners[object] = owner;
}

}  // namespace brisolte::standins
