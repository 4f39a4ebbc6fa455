#pragma once

namespace brisolte::testing {

/// While it lives, one allocation of the thread that made it fails: the one after so many others.
class FailingMemory {
 public:
  explicit FailingMemory(int after = 0);
  FailingMemory(const FailingMemory&) = delete;
  FailingMemory& operator=(const FailingMemory&) = delete;
  ~FailingMemory();
};

}  // namespace brisolte::testing
