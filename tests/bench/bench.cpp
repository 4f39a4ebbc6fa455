// bench MEASUREMENT ARGUMENT...: makes one measurement and prints its figures as JSON. Each runs in a process
// of its own, so that its CPU time and peak memory are its own too. tools/bench.mjs runs them all.

#include "bench.h"

#include <exception>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>

#include "common/logger.h"

namespace brisolte::bench {

void Figures::Add(const std::string& name, double value) {
  std::ostringstream text;
  text.precision(12);
  text << (text_.empty() ? "" : ",") << '"' << name << "\":" << value;
  text_ += text.str();
}

namespace {

Figures Measure(const Words& words) {
  const std::map<std::string, std::function<Figures(const Words&)>> measurements{
      {"encode", MeasureEncoding}, {"pictures", WritePictures}, {"copies", MeasureCopies},
      {"packets", MeasurePackets}, {"sounds", MeasureSounds},   {"growth", MeasureGrowth},
  };
  return measurements.at(words.at(0))(Words(words.begin() + 1, words.end()));
}

}  // namespace
}  // namespace brisolte::bench

int main(int count, char** words) {
  try {
    brisolte::Logger::SetLevel(brisolte::LogLevel::kFatal);
    std::cout << brisolte::bench::Measure({words + 1, words + count}).Json() << '\n';
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "bench: " << error.what() << '\n';
    return 1;
  }
}
