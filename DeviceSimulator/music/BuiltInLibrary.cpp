#include <cstdint>
#include <string>

#include "DeviceSimulator/music/LibraryBuilder.h"
#include "DeviceSimulator/music/LibraryRandom.h"
#include "DeviceSimulator/music/LibraryText.h"

namespace DeviceSimulator {

namespace {

// An album a line: its artist (none for a compilation, whose titles are "artist/title"), title, genre,
// composer and number of discs, then the titles of its tracks. All names are invented. Besides likely ones
// there is what breaks a user interface that has only seen such: one title on two albums, one album title by
// two artists, lower case, digits and quotes in front, scripts from right to left, and names too long for any
// record, with more than a byte to a character where they are cut.
constexpr std::string_view kAlbumLines =
#include "DeviceSimulator/music/BuiltInAlbums.txt"
    ;

/// Most music is at 44,100 Hz; the rest makes the receiver of the sound change its rate between albums.
std::uint32_t SampleRateOf(std::size_t album) {
    if (album % 9 == 4) {
        return 48000;
    }
    return album % 13 == 7 ? 32000 : 44100;
}

/// Two to six minutes.
std::uint32_t DurationOf(std::string_view album, std::string_view title) {
    LibraryRandom random(std::string(album) + '\0' + std::string(title));
    return 120000 + random.Below(240001);
}

void AddAlbum(LibraryBuilder& builder, std::string_view line, std::uint32_t sampleRate) {
    const auto fields = Split(line, '|');
    const std::vector<std::string_view> titles(fields.begin() + 5, fields.end());
    const auto discs = static_cast<std::size_t>(fields[4].front() - '0');
    const std::size_t perDisc = (titles.size() + discs - 1) / discs;
    TrackTags tags;
    tags.album = fields[1];
    tags.genre = fields[2];
    tags.composer = fields[3];
    tags.sampleRate = sampleRate;
    for (std::size_t i = 0; i < titles.size(); ++i) {
        tags.title = titles[i];
        tags.artist = fields[0];
        if (tags.artist.empty()) {
            const auto parts = Split(titles[i], '/');
            tags.artist = parts.front();
            tags.title = parts.back();
            tags.compilation = 1;
        }
        tags.disc = static_cast<std::uint32_t>(i / perDisc + 1);
        tags.track = static_cast<std::uint32_t>(i % perDisc + 1);
        tags.durationMs = DurationOf(tags.album, tags.title);
        builder.Add(tags);
    }
}

/// `length` tracks from `first` on, each `step` behind the one before, around the end.
std::vector<std::uint32_t> EveryNth(std::size_t count, std::size_t first, std::size_t step,
                                    std::size_t length) {
    std::vector<std::uint32_t> tracks;
    for (std::size_t i = 0; i < length; ++i) {
        tracks.push_back(static_cast<std::uint32_t>((first + i * step) % count));
    }
    return tracks;
}

void AddPlaylists(LibraryBuilder& builder) {
    const std::size_t count = builder.TrackCount();
    builder.AddPlaylist("Morning Commute", EveryNth(count, 3, 29, 24));
    auto drive = EveryNth(count, 200, 7, 60);
    drive.insert(drive.end(), {drive[0], drive[30], drive[0]});  // favourites come round again
    builder.AddPlaylist("Long Drive", drive);
    builder.AddPlaylist("the kitchen on sundays", EveryNth(count, 60, 3, 15));
    builder.AddPlaylist("夜のプレイリスト", EveryNth(count, 190, 11, 20));
    builder.AddPlaylist("One Song", EveryNth(count, 42, 1, 1));
    builder.AddPlaylist("Workout 2", EveryNth(count, 111, 17, 30));
    builder.AddPlaylist("Nothing Yet", {});
}

}  // namespace

std::unique_ptr<Library> MakeBuiltInLibrary(const Sorting& sorting) {
    LibraryBuilder builder(sorting);
    const auto albums = Split(kAlbumLines, '\n');
    for (std::size_t i = 0; i < albums.size(); ++i) {
        AddAlbum(builder, albums[i], SampleRateOf(i));
    }
    AddPlaylists(builder);
    return builder.Build();
}

}  // namespace DeviceSimulator
