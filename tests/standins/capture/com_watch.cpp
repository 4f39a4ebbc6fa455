#include "capture/com_watch.h"

#include <objbase.h>
#include <windows.h>

#include <atomic>
#include <cstdio>

#include "capture/service_thread.h"
#include "shared/com_object.h"

namespace brisolte::standins {

namespace {

constexpr CLSID kWatchClass{0x5B0F7D62, 0x3D4C, 0x4E19, {0x8C, 0x21, 0x6A, 0x0E, 0x97, 0x5F, 0xD3, 0x44}};

std::atomic<bool> watching{false};
std::atomic<long> letGo{0};

/// Tells of it unless the process keeps the multithreaded apartment all the same, as a thread sees that has
/// nothing to do with COM. Nobody waits for that thread: COM may hold a lock while it releases the watcher.
void TellIfLetGo() {
  StartServiceThread([] {
    APTTYPE type{};
    APTTYPEQUALIFIER qualifier{};
    if (FAILED(CoGetApartmentType(&type, &qualifier))) {
      ++letGo;
      std::fputs("standin: the process let go of COM, which unloads the service under its threads\n", stderr);
      std::fflush(stderr);
    }
  });
}

/// As the system does, which unloads the library of a class only when the process lets go of COM.
bool KeepLibrary() {
  HMODULE self = nullptr;
  return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                            reinterpret_cast<LPCWSTR>(&KeepLibrary), &self) != FALSE;
}

/// Registered as a class, it is released by COM itself when the apartment that it was registered in ends.
class Watcher final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
    if (iid != IID_IUnknown && iid != IID_IClassFactory) {
      *object = nullptr;
      return E_NOINTERFACE;
    }
    AddRef();
    *object = static_cast<IClassFactory*>(this);
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references_; }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = --references_;
    if (left == 0) {
      watching = false;
      TellIfLetGo();
    }
    return left;
  }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* /*outer*/, REFIID /*iid*/, void** /*object*/) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL /*lock*/) override { return S_OK; }

 private:
  std::atomic<ULONG> references_{0};
};

}  // namespace

void WatchCom() {
  static Watcher watcher;
  if (watching.exchange(true)) {
    return;
  }
  DWORD cookie = 0;
  // Wine unloads it already when a class lacks the interface that it was asked for: COM would be left with
  // the address of a watcher that is gone, and the service's threads without their code.
  if (!KeepLibrary() || FAILED(CoRegisterClassObject(kWatchClass, &watcher, CLSCTX_INPROC_SERVER,
                                                     REGCLS_MULTIPLEUSE, &cookie))) {
    watching = false;
  }
}

long ComLetGoCount() {
  return letGo;
}

}  // namespace brisolte::standins
