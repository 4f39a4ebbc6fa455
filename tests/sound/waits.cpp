// waits FILE: how long the waits of a millisecond are here that the threads of the sound make, and what an
// endpoint would lose of a minute's 6000 packets with them, as JSON into the file.

#include <windows.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "audio/precise_wait.h"
#include "support/simulated_endpoint.h"

namespace brisolte {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;
using testing::PacketsLostInAMinute;
using testing::WaitEnd;

constexpr milliseconds kWait{1};
constexpr microseconds kHiccup{9'000};

using Waits = std::vector<microseconds>;

Waits Measure(const std::function<void()>& wait) {
  constexpr std::size_t kCount = 3'000;
  Waits waits(kCount);
  for (microseconds& lasted : waits) {
    const auto begin = std::chrono::steady_clock::now();
    wait();
    lasted = std::chrono::duration_cast<microseconds>(std::chrono::steady_clock::now() - begin);
  }
  return waits;
}

/// What waits of a millisecond become that begin at any moment between two ticks and end with one.
Waits OfTicks() {
  Waits waits;
  for (microseconds begin{0}; begin < milliseconds(125); begin += microseconds(41)) {
    waits.push_back(testing::EndWithTick(begin, begin + kWait) - begin);
  }
  return waits;
}

/// The measured waits, one after the other, again and again.
WaitEnd Repeat(const Waits& waits) {
  return [&waits, next = std::size_t{0}](microseconds begin, microseconds /*due*/) mutable {
    return begin + waits[next++ % waits.size()];
  };
}

std::string Row(const std::string& name, Waits waits, const std::function<WaitEnd()>& makeEnd) {
  const int lost = PacketsLostInAMinute(makeEnd(), microseconds(0));
  const int lostWithHiccups = PacketsLostInAMinute(makeEnd(), kHiccup);
  std::ranges::sort(waits);
  const auto at = [&waits](double part) {
    return std::to_string(
        waits[static_cast<std::size_t>(part * static_cast<double>(waits.size() - 1))].count());
  };
  return "{\"wait\":\"" + name + "\",\"least\":" + at(0) + ",\"median\":" + at(0.5) +
         ",\"most99\":" + at(0.99) + ",\"most\":" + at(1) + ",\"lost\":" + std::to_string(lost) +
         ",\"lostWithHiccups\":" + std::to_string(lostWithHiccups) + "}";
}

std::string MeasuredRow(const std::string& name, const std::function<void()>& wait) {
  const Waits waits = Measure(wait);
  return Row(name, waits, [&waits] { return Repeat(waits); });
}

void Run(std::ostream& out) {
  const PreciseWait precise;
  out << '[' << MeasuredRow("the module's", [&precise] { precise.For(kWait); }) << ','
      << MeasuredRow("ordinary", [] { std::this_thread::sleep_for(kWait); }) << ','
      << Row("ending with a tick of 15.6 ms", OfTicks(), [] { return WaitEnd(testing::EndWithTick); })
      << "]\n";
}

}  // namespace
}  // namespace brisolte

int main(int count, char** words) {
  if (count != 2) {
    return 1;
  }
  std::ofstream out(words[1]);
  brisolte::Run(out);
  return out.good() ? 0 : 1;
}
