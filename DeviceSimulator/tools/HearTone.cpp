// hear-tone <file.wav>: prints the frequency in Hz of the newest sound in a file that may still grow, such as
// the simulated sound card's playback.wav; 0 for silence.

#include <iostream>

#include "DeviceSimulator/tools/WavTone.h"

int main(int argc, char** argv) {
    const auto tone = argc == 2 ? DeviceSimulator::NewestTone(argv[1]) : std::nullopt;
    if (!tone) {
        std::cerr << "Usage: hear-tone <file.wav>, with 40 ms of sound at least\n";
        return 1;
    }
    std::cout << *tone << '\n';
}
