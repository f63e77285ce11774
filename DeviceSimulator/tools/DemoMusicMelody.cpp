#include "DeviceSimulator/tools/DemoMusicMelody.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "DeviceSimulator/LibraryRandom.h"

namespace DeviceSimulator {

using Samples = std::vector<std::int16_t>;

namespace {

constexpr double kTwoPi = 6.283185307179586;
// Any walk over these five notes sounds like a tune.
constexpr std::array<int, 5> kPentatonic{0, 2, 4, 7, 9};

double Frequency(std::uint32_t step, double root) {
    const auto octave = static_cast<int>(step / kPentatonic.size());
    const int semitones = 12 * octave + kPentatonic[step % kPentatonic.size()];
    return root * std::exp2(semitones / 12.0);
}

/// How loud a struck note is at `time`, -1 to 1: two partials that die away, without a click at either end.
double Level(double frequency, double time, double length) {
    const double phase = kTwoPi * frequency * time;
    const double edge = std::min({1.0, time * 200, (length - time) * 100});
    return edge * std::exp(-2.5 * time) * (0.8 * std::sin(phase) + 0.2 * std::sin(2 * phase));
}

Samples MakeNote(double frequency, double seconds, std::uint32_t sampleRate) {
    Samples samples;
    const auto frames = static_cast<std::size_t>(seconds * sampleRate);
    samples.reserve(2 * frames);
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const double time = static_cast<double>(frame) / sampleRate;
        const auto sample = static_cast<std::int16_t>(std::lround(12000 * Level(frequency, time, seconds)));
        samples.insert(samples.end(), {sample, sample});
    }
    return samples;
}

}  // namespace

Samples MakeMelody(std::uint32_t seed, std::uint32_t sampleRate, std::uint32_t seconds) {
    LibraryRandom random(std::uint64_t{seed});
    const double root = 220.0 * std::exp2(random.Below(12) / 12.0);
    const double noteLength = 0.2 + 0.05 * random.Below(5);
    std::array<Samples, 13> notes;  // made when first struck
    const std::size_t size = std::size_t{2} * sampleRate * seconds;
    Samples samples;
    samples.reserve(size);
    std::uint32_t step = 5;
    while (samples.size() < size) {
        // Up to two steps down or up.
        step = std::min<std::uint32_t>(notes.size() - 1, std::max(step, 2U) - 2 + random.Below(5));
        Samples& note = notes[step];
        if (note.empty()) {
            note = MakeNote(Frequency(step, root), noteLength, sampleRate);
        }
        const auto length = static_cast<std::ptrdiff_t>(std::min(note.size(), size - samples.size()));
        samples.insert(samples.end(), note.begin(), note.begin() + length);
    }
    return samples;
}

}  // namespace DeviceSimulator
