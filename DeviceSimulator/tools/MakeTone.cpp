// make-tone-file <file> <rate> <Hz> <Hz>: a music file of 40 seconds that can be told by ear or by program:
// one tone and then another, each lasting half the time.

#include <array>
#include <cstdlib>
#include <iostream>

#include "DeviceSimulator/tools/ToneFile.h"

int main(int argc, char** argv) {
    if (argc != 5) {
        std::cerr << "Usage: make-tone-file <file.mp3|.flac|.ogg|.opus> <rate> <Hz> <Hz>\n";
        return 2;
    }
    const auto rate = static_cast<std::uint32_t>(std::strtoul(argv[2], nullptr, 10));
    const std::array<double, 2> tones{std::strtod(argv[3], nullptr), std::strtod(argv[4], nullptr)};
    const std::string error = DeviceSimulator::WriteToneFile(argv[1], rate, tones, 20 * rate);
    if (!error.empty()) {
        std::cerr << error << '\n';
    }
    return error.empty() ? 0 : 1;
}
