// Plays tones on a render endpoint: tone.exe ENDPOINT FREQUENCY LEVEL READY CONTROL
//
// ENDPOINT is a part of the endpoint's name, LEVEL 1 is full scale. The stream is silent until it is told to
// play. READY is written when the stream runs, and again after each command: the number of commands carried
// out. CONTROL is a file with a command a line: "play SECONDS" plays the tone from now on for so long,
// "close" ends the program. It ends by itself after five minutes.

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

using testing::RenderClient;

class Tone {
 public:
  Tone(const std::string& endpoint, double frequency, double level)
      : client_(testing::FindRenderEndpoint(endpoint)), frequency_(frequency), level_(level) {}

  void TopUp() {
    client_.TopUp([this](std::uint64_t sample) { return ValueAt(sample); });
  }

  void PlayFor(double seconds) {
    beginning_ = next_;
    end_ = next_ + static_cast<std::uint64_t>(seconds * client_.rate());
  }

 private:
  float ValueAt(std::uint64_t sample) {
    next_ = sample + 1;
    if (sample < beginning_ || sample >= end_) {
      return 0;
    }
    const double time = static_cast<double>(sample - beginning_) / client_.rate();
    return static_cast<float>(level_ * std::sin(2 * std::numbers::pi * frequency_ * time));
  }

  RenderClient client_;
  const double frequency_;
  const double level_;
  std::uint64_t next_ = 0;
  std::uint64_t beginning_ = 0;
  std::uint64_t end_ = 0;
};

void Run(const std::vector<std::wstring>& words) {
  using std::chrono::steady_clock;
  if (words.size() != 5) {
    throw std::invalid_argument("usage: tone ENDPOINT FREQUENCY LEVEL READY CONTROL");
  }
  const ComApartment com(COINIT_APARTMENTTHREADED);
  Tone tone(ToUtf8(words[0]), std::stod(words[1]), std::stod(words[2]));
  CommandFile control(words[4]);
  int commands = 0;
  tone.TopUp();
  ReplaceFileText(words[3], "0");
  const auto end = steady_clock::now() + std::chrono::minutes(5);
  while (steady_clock::now() < end) {
    for (const std::string& command : control.NewLines()) {
      if (command == "close") {
        return;
      }
      if (!command.starts_with("play ")) {
        throw std::invalid_argument(command);
      }
      tone.PlayFor(std::stod(command.substr(5)));
      ReplaceFileText(words[3], std::to_string(++commands));
    }
    tone.TopUp();
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
}

}  // namespace
}  // namespace brisolte

int main() {
  try {
    brisolte::Run(brisolte::testing::CommandLineArguments());
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "tone: " << error.what() << '\n';
    return 1;
  }
}
