// make-tone-file <file> <rate> <Hz> <Hz>: a music file of 40 seconds that can be told by ear or by program:
// one tone and then another, each lasting half the time.

#include <cmath>
#include <cstdlib>
#include <iostream>

#include "DeviceSimulator/tools/DemoMusicEncoder.h"

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr std::size_t kSeconds = 40;
constexpr double kAmplitude = 8000;

/// Stereo, the same on both sides.
std::vector<std::int16_t> MakeTones(std::uint32_t rate, double first, double second) {
    std::vector<std::int16_t> samples(std::size_t{rate} * 2 * kSeconds);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double hertz = i < samples.size() / 2 ? first : second;
        const double time = static_cast<double>(i / 2) / rate;
        samples[i] = static_cast<std::int16_t>(kAmplitude * std::sin(kTwoPi * hertz * time));
    }
    return samples;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 5) {
        std::cerr << "Usage: make-tone-file <file.mp3|.flac|.ogg|.opus> <rate> <Hz> <Hz>\n";
        return 2;
    }
    const auto rate = static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10));
    const auto samples = MakeTones(rate, std::strtod(argv[3], nullptr), std::strtod(argv[4], nullptr));
    const std::string error = DeviceSimulator::EncodeFile(argv[1], samples, rate);
    if (!error.empty()) {
        std::cerr << error << '\n';
    }
    return error.empty() ? 0 : 1;
}
