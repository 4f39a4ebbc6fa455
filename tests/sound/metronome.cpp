// Flashes and clicks once a second, both at the same moment: metronome.exe ENDPOINT READY
//
// The flash is a white window of 320 by 180 pixels in the screen's corner, black otherwise. The click is a
// short tone on the render endpoint with ENDPOINT in its name; the window turns white when the endpoint's
// clock says that the tone is being heard. READY is written after the first beat. It goes on until it is
// ended, five minutes at most.

#include <windows.h>
// After windows.h, which declares what it needs.
#include <mmsystem.h>

#include <chrono>
#include <cmath>
#include <cstdint>
#include <exception>
#include <iostream>
#include <numbers>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "common/com_apartment.h"
#include "common/text.h"
#include "pattern/status_file.h"
#include "sound/render_client.h"
#include "support/command_line.h"

namespace brisolte {
namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 180;
constexpr double kBeatSeconds = 0.1;  // how long a flash and a click last
constexpr double kFrequency = 2'000;

/// A window of one colour, on top of all others.
class Lamp {
 public:
  Lamp()
      : window_(CreateWindowExW(WS_EX_TOPMOST, L"STATIC", L"Metronome", WS_POPUP | WS_VISIBLE, 0, 0, kWidth,
                                kHeight, nullptr, nullptr, nullptr, nullptr)) {
    if (window_ == nullptr) {
      throw std::runtime_error("the window cannot be created");
    }
    Paint();
  }
  Lamp(const Lamp&) = delete;
  Lamp& operator=(const Lamp&) = delete;
  ~Lamp() { DestroyWindow(window_); }

  void Switch(bool on) {
    if (on != on_) {
      on_ = on;
      Paint();
    }
  }

  static void PumpMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE) != 0) {
      DispatchMessageW(&message);
    }
  }

 private:
  void Paint() const {
    const RECT whole{0, 0, kWidth, kHeight};
    HDC target = GetDC(window_);
    FillRect(target, &whole, static_cast<HBRUSH>(GetStockObject(on_ ? WHITE_BRUSH : BLACK_BRUSH)));
    ReleaseDC(window_, target);
    GdiFlush();
  }

  HWND window_;
  bool on_ = false;
};

bool IsInBeat(double seconds) {
  return seconds >= 1 && seconds - std::floor(seconds) < kBeatSeconds;
}

void Run(const std::vector<std::wstring>& words) {
  using std::chrono::steady_clock;
  if (words.size() != 2) {
    throw std::invalid_argument("usage: metronome ENDPOINT READY");
  }
  const ComApartment com(COINIT_APARTMENTTHREADED);
  testing::RenderClient client(testing::FindRenderEndpoint(ToUtf8(words[0])));
  Lamp lamp;
  const auto click = [&](std::uint64_t sample) {
    const double time = static_cast<double>(sample) / client.rate();
    return IsInBeat(time) ? static_cast<float>(0.5 * std::sin(2 * std::numbers::pi * kFrequency * time))
                          : 0.0F;
  };
  bool ready = false;
  const auto end = steady_clock::now() + std::chrono::minutes(5);
  while (steady_clock::now() < end) {
    client.TopUp(click);
    const double heard = client.SecondsHeard();
    lamp.Switch(IsInBeat(heard));
    if (!ready && heard > 1) {
      ready = true;
      ReplaceFileText(words[1], "ready");
    }
    Lamp::PumpMessages();
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
}

}  // namespace
}  // namespace brisolte

int WINAPI WinMain(HINSTANCE /*instance*/, HINSTANCE /*previous*/, LPSTR /*command*/, int /*show*/) {
  try {
    timeBeginPeriod(1);
    brisolte::Run(brisolte::testing::CommandLineArguments());
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "metronome: " << error.what() << '\n';
    return 1;
  }
}
