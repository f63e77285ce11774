#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "DeviceSimulator/music/LibraryBuilder.h"
#include "DeviceSimulator/music/LibraryRandom.h"
#include "DeviceSimulator/music/LibraryText.h"

namespace DeviceSimulator {

namespace {

constexpr std::size_t kTracksPerAlbum = 12;
constexpr std::size_t kAlbumsPerArtist = 5;
constexpr std::size_t kTracksPerArtist = kTracksPerAlbum * kAlbumsPerArtist;

// Lists of words. The first has three of each letter, so that a list of names has something under every one.
constexpr std::string_view kWordLines =
#include "DeviceSimulator/music/SyntheticWords.txt"
    ;

/// What names are made of.
struct Words {
    std::vector<std::string_view> first, second, third, genres;
};

Words ReadWords() {
    const auto lines = Split(kWordLines, '\n');
    return {Split(lines[0], '|'), Split(lines[1], '|'), Split(lines[2], '|'), Split(lines[3], '|')};
}

void Append(std::string& text, std::string_view word) {
    if (!text.empty()) {
        text += ' ';
    }
    text += word;
}

/// A name of its own for every `number`: the first words run through all their pairs, and when those are used
/// up a counter makes the difference.
void SetUniqueName(std::string& name, const Words& words, std::size_t number, std::string_view article = {}) {
    const auto& first = words.first;
    const auto& second = words.second;
    const std::size_t pairs = first.size() * second.size();
    const std::size_t pair = number % pairs;
    name = article;
    Append(name, first[pair % first.size()]);
    // Shifted by the first word, so that neighbours in the list do not all end alike.
    Append(name, second[(pair / first.size() + 7 * (pair % first.size())) % second.size()]);
    if (number >= pairs) {
        Append(name, std::to_string(number / pairs + 1));
    }
}

std::string_view Pick(const std::vector<std::string_view>& words, LibraryRandom& random) {
    return words[random.Below(static_cast<std::uint32_t>(words.size()))];
}

void SetTitle(std::string& title, const Words& words, LibraryRandom& random) {
    title.clear();
    if (random.Below(16) == 0) {
        title = "The";
    }
    Append(title, Pick(words.first, random));
    Append(title, Pick(words.second, random));
    if (random.Below(2) == 0) {
        Append(title, Pick(words.third, random));
    }
}

void AddPlaylists(LibraryBuilder& builder, LibraryRandom& random) {
    const auto count = static_cast<std::uint32_t>(builder.TrackCount());
    for (int playlist = 1; playlist <= 10 && count > 0; ++playlist) {
        std::vector<std::uint32_t> tracks(10 + random.Below(90));
        for (std::uint32_t& track : tracks) {
            track = random.Below(count);
        }
        builder.AddPlaylist("Mix " + std::to_string(playlist), std::move(tracks));
    }
}

}  // namespace

std::unique_ptr<Library> MakeSyntheticLibrary(std::size_t tracks, const Sorting& sorting) {
    const Words words = ReadWords();
    LibraryBuilder builder(sorting);
    LibraryRandom random(std::uint64_t{tracks});
    TrackTags tags;
    for (std::size_t i = 0; i < tracks; ++i) {
        if (i % kTracksPerArtist == 0) {
            const std::size_t artist = i / kTracksPerArtist;
            SetUniqueName(tags.artist, words, artist, artist % 4 == 1 ? "The" : "");
            tags.genre = Pick(words.genres, random);
        }
        if (i % kTracksPerAlbum == 0) {
            // Far enough from the artists' names that none has an album named like it.
            SetUniqueName(tags.album, words, i / kTracksPerAlbum + 31);
            tags.composer.clear();
            if (random.Below(3) == 0) {
                SetUniqueName(tags.composer, words, random.Below(500));
            }
            tags.sampleRate = random.Below(8) == 0 ? 48000 : 44100;
        }
        SetTitle(tags.title, words, random);
        tags.track = static_cast<std::uint32_t>(i % kTracksPerAlbum + 1);
        tags.durationMs = 120000 + random.Below(240001);
        builder.Add(tags);
    }
    AddPlaylists(builder, random);
    return builder.Build();
}

}  // namespace DeviceSimulator
