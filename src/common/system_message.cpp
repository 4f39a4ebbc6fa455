#include "common/system_message.h"

#include <windows.h>

#include <memory>

#include "common/text.h"

namespace brisolte {

static_assert(MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT) == 1024);

std::string SystemMessage(std::int32_t code, std::uint16_t language) {
  wchar_t* raw = nullptr;
  // With the allocating flag the parameter takes the address of the buffer's pointer. The call for 8-bit text
  // would give the words in the system's code page, in which neither the log nor JavaScript is.
  const DWORD length = FormatMessageW(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
      static_cast<DWORD>(code), language, reinterpret_cast<wchar_t*>(&raw), 0, nullptr);
  const std::unique_ptr<wchar_t, decltype(&LocalFree)> message(raw, &LocalFree);
  return length != 0 ? ToUtf8(std::wstring(message.get(), length)) : std::string();
}

}  // namespace brisolte
