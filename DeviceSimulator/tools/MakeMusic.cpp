// make-demo-music <folder>: a small set of tagged music files.

#include <exception>
#include <iostream>

#include "DeviceSimulator/tools/DemoMusic.h"

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "Usage: make-demo-music <folder>\nWrites a small set of tagged music files.\n";
        return 1;
    }
    try {
        const auto error = DeviceSimulator::MakeDemoMusic(argv[1]);
        if (error.empty()) {
            return 0;
        }
        std::cerr << error << '\n';
    } catch (const std::exception& error) {
        std::cerr << "Cannot make the music: " << error.what() << '\n';
    }
    return 1;
}
