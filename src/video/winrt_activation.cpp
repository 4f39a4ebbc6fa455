#include "video/winrt_activation.h"

#include <roapi.h>
#include <winstring.h>

#include <cwchar>

namespace brisolte {
namespace {

HRESULT Activate(const wchar_t* className, REFIID iid, void** factory) {
  HSTRING_HEADER header{};
  HSTRING name = nullptr;  // refers to the characters and the header, so there is nothing to free
  const auto length = static_cast<UINT32>(std::wcslen(className));
  const HRESULT made = WindowsCreateStringReference(className, length, &header, &name);
  return FAILED(made) ? made : RoGetActivationFactory(name, iid, factory);
}

}  // namespace

HRESULT WinRtActivation::GetFactory(const wchar_t* className, REFIID iid, void** factory) {
  const HRESULT result = Activate(className, iid, factory);
  if (result != CO_E_NOTINITIALIZED || apartment_.held()) {
    return result;
  }
  const HRESULT kept = apartment_.Hold();
  return FAILED(kept) ? kept : Activate(className, iid, factory);
}

}  // namespace brisolte
