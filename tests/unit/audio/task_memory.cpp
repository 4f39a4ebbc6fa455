#include "task_memory.h"

#include <gtest/gtest.h>
#include <objidl.h>

#include <mutex>
#include <set>

namespace brisolte::testing {
namespace {

/// COM calls it around every allocation of the process. It changes none of them.
class MallocSpy : public IMallocSpy {
 public:
  MallocSpy() { EXPECT_EQ(CoRegisterMallocSpy(this), S_OK); }
  MallocSpy(const MallocSpy&) = delete;
  MallocSpy& operator=(const MallocSpy&) = delete;
  virtual ~MallocSpy() = default;

  void Watch(void* memory) {
    const std::scoped_lock lock(mutex_);
    watched_.insert(memory);
  }
  std::size_t count() {
    const std::scoped_lock lock(mutex_);
    return watched_.size();
  }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    const bool known = IsEqualIID(iid, __uuidof(IUnknown)) || IsEqualIID(iid, __uuidof(IMallocSpy));
    *object = known ? this : nullptr;
    return known ? S_OK : E_NOINTERFACE;
  }
  // It lives as long as the process.
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }

  SIZE_T STDMETHODCALLTYPE PreAlloc(SIZE_T bytes) override { return bytes; }
  void* STDMETHODCALLTYPE PostAlloc(void* memory) override { return memory; }
  void* STDMETHODCALLTYPE PreFree(void* memory, BOOL /*spied*/) override {
    const std::scoped_lock lock(mutex_);
    watched_.erase(memory);
    return memory;
  }
  void STDMETHODCALLTYPE PostFree(BOOL /*spied*/) override {}
  SIZE_T STDMETHODCALLTYPE PreRealloc(void* memory, SIZE_T bytes, void** newMemory, BOOL /*spied*/) override {
    *newMemory = memory;
    return bytes;
  }
  void* STDMETHODCALLTYPE PostRealloc(void* memory, BOOL /*spied*/) override { return memory; }
  void* STDMETHODCALLTYPE PreGetSize(void* memory, BOOL /*spied*/) override { return memory; }
  SIZE_T STDMETHODCALLTYPE PostGetSize(SIZE_T bytes, BOOL /*spied*/) override { return bytes; }
  void* STDMETHODCALLTYPE PreDidAlloc(void* memory, BOOL /*spied*/) override { return memory; }
  int STDMETHODCALLTYPE PostDidAlloc(void* /*memory*/, BOOL /*spied*/, int actual) override { return actual; }
  void STDMETHODCALLTYPE PreHeapMinimize() override {}
  void STDMETHODCALLTYPE PostHeapMinimize() override {}

 private:
  std::mutex mutex_;
  std::set<void*> watched_;
};

MallocSpy& Spy() {
  static MallocSpy spy;
  return spy;
}

}  // namespace

void* AllocateWatched(std::size_t bytes) {
  Spy();
  void* memory = CoTaskMemAlloc(bytes);
  Spy().Watch(memory);
  return memory;
}

std::size_t WatchedAllocations() {
  return Spy().count();
}

}  // namespace brisolte::testing
