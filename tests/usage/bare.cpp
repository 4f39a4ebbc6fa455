// Tells what the system itself keeps of calls that a recording makes, as one line of JSON: bare ROUNDS
// The numbers are handles for each call. On Windows they are 0.

#include <windows.h>
// After windows.h, which declares what they need.
#include <roapi.h>
#include <unknwn.h>
#include <winstring.h>
#include <wrl/client.h>

#include <iostream>
#include <string_view>

#include "common/mta_usage.h"
#include "support/command_line.h"
#include "usage/handle_count.h"

namespace {

constexpr std::wstring_view kClass = L"Windows.Graphics.Capture.GraphicsCaptureItem";

void AskForFactory() {
  HSTRING_HEADER header{};
  HSTRING name = nullptr;
  if (SUCCEEDED(
          WindowsCreateStringReference(kClass.data(), static_cast<UINT32>(kClass.size()), &header, &name))) {
    Microsoft::WRL::ComPtr<IUnknown> factory;
    RoGetActivationFactory(name, __uuidof(IUnknown), reinterpret_cast<void**>(factory.GetAddressOf()));
  }
}

}  // namespace

int main() {
  const auto words = brisolte::testing::CommandLineArguments();
  const unsigned long rounds = words.size() == 1 ? wcstoul(words[0].c_str(), nullptr, 10) : 0;
  brisolte::MtaUsage apartment;
  if (rounds == 0 || FAILED(apartment.Hold())) {
    std::cerr << "usage: bare ROUNDS\n";
    return 2;
  }
  AskForFactory();
  const auto before = brisolte::CountHandles(GetCurrentProcessId());
  for (unsigned long round = 0; round < rounds; ++round) {
    AskForFactory();
  }
  const auto after = brisolte::CountHandles(GetCurrentProcessId());
  if (!before || !after) {
    std::cerr << "the handles cannot be counted\n";
    return 1;
  }
  const double kept = static_cast<double>(*after) - static_cast<double>(*before);
  std::cout << "{\"RoGetActivationFactory\":" << kept / static_cast<double>(rounds) << "}\n";
  return 0;
}
