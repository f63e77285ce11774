#include "DeviceSimulator/tools/DemoMusicMelody.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "DeviceSimulator/music/LibraryRandom.h"

namespace DeviceSimulator {

namespace {

constexpr double kTwoPi = 6.283185307179586;
// Any walk over these notes, in semitones, sounds like a tune.
constexpr std::array<int, 13> kNotes{0, 2, 4, 7, 9, 12, 14, 16, 19, 21, 24, 26, 28};

/// How loud a struck note is at `time`, -1 to 1: it dies away, without a click at either end.
double Level(double frequency, double time, double length) {
    const double edge = std::min({1.0, time * 200, (length - time) * 100});
    return edge * std::exp(-2.5 * time) * std::sin(kTwoPi * frequency * time);
}

}  // namespace

std::vector<std::int16_t> MakeMelody(std::uint32_t seed, std::uint32_t sampleRate, std::uint32_t seconds) {
    LibraryRandom random(std::uint64_t{seed});
    const double root = 220.0 * std::exp2(random.Below(12) / 12.0);
    const double length = 0.2 + 0.05 * random.Below(5);
    const auto noteFrames = static_cast<std::size_t>(length * sampleRate);
    std::vector<std::int16_t> samples(std::size_t{2} * sampleRate * seconds);
    std::uint32_t note = 5;
    double frequency = 0;
    for (std::size_t frame = 0; frame < samples.size() / 2; ++frame) {
        if (frame % noteFrames == 0) {
            // Up to two steps down or up.
            note = std::min<std::uint32_t>(kNotes.size() - 1, std::max(note, 2U) - 2 + random.Below(5));
            frequency = root * std::exp2(kNotes[note] / 12.0);
        }
        const double time = static_cast<double>(frame % noteFrames) / sampleRate;
        const auto sample = static_cast<std::int16_t>(12000 * Level(frequency, time, length));
        samples[2 * frame] = samples[2 * frame + 1] = sample;
    }
    return samples;
}

}  // namespace DeviceSimulator
