#include <mmdeviceapi.h>
#include <wincodec.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <utility>

#include "com_faults/hook_object.h"
#include "shared/com_object.h"
#include "shared/faults.h"
#include "support/exported_function.h"

namespace brisolte::standins {

namespace {

/// A class of the system, in whose registration this DLL has taken the place of Wine's.
struct SystemClass {
  CLSID clsid;
  const wchar_t* dll;
  const char* creation;
};

const SystemClass* Find(REFCLSID clsid) {
  static const std::array kClasses{
      SystemClass{__uuidof(MMDeviceEnumerator), L"mmdevapi.dll", "CreateDeviceEnumerator"},
      SystemClass{CLSID_WICImagingFactory, L"windowscodecs.dll", "CreateImagingFactory"},
  };
  const auto* const found =
      std::ranges::find_if(kClasses, [&](const SystemClass& each) { return each.clsid == clsid; });
  return found != kClasses.end() ? &*found : nullptr;
}

/// Makes Wine's own objects, whose methods fail when they are told to.
class FaultyFactory final : public ComObject<IClassFactory> {
 public:
  FaultyFactory(ComPtr<IClassFactory> wines, const char* creation)
      : wines_(std::move(wines)), creation_(creation) {}

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
    if (object == nullptr) {
      return E_POINTER;
    }
    *object = nullptr;
    if (const auto fault = TakeFault(creation_)) {
      return *fault;
    }
    const NoFaults inside;
    const HRESULT made = wines_->CreateInstance(outer, iid, object);
    HookObject(iid, *object, this);
    return made;
  }

  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override { return wines_->LockServer(lock); }

 private:
  ComPtr<IClassFactory> wines_;
  const char* creation_;
};

/// Keeps the module that has this address for the rest of the process: the tables of Wine's methods lead into
/// this DLL, whatever COM unloads.
void Keep(const void* address) {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                     static_cast<const wchar_t*>(address), &module);
}

HRESULT FindWinesFactory(const SystemClass& wanted, ComPtr<IClassFactory>& factory) {
  const HMODULE module = LoadLibraryW(wanted.dll);
  if (module == nullptr) {
    return HRESULT_FROM_WIN32(GetLastError());
  }
  using Function = HRESULT(WINAPI*)(REFCLSID, REFIID, void**);
  const auto getClassObject = ExportedFunction<Function>(module, "DllGetClassObject");
  Keep(reinterpret_cast<const void*>(getClassObject));
  Keep(reinterpret_cast<const void*>(&FindWinesFactory));
  return getClassObject(wanted.clsid, __uuidof(IClassFactory),
                        reinterpret_cast<void**>(factory.GetAddressOf()));
}

}  // namespace

}  // namespace brisolte::standins

using namespace brisolte::standins;

extern "C" {

HRESULT WINAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
  if (object == nullptr) {
    return E_POINTER;
  }
  *object = nullptr;
  const SystemClass* const wanted = Find(clsid);
  if (wanted == nullptr) {
    return CLASS_E_CLASSNOTAVAILABLE;
  }
  ComPtr<IClassFactory> wines;
  const HRESULT found = FindWinesFactory(*wanted, wines);
  return FAILED(found) ? found
                       : Make<FaultyFactory>(std::move(wines), wanted->creation)->QueryInterface(iid, object);
}

HRESULT WINAPI DllCanUnloadNow() {
  return S_FALSE;
}
}
